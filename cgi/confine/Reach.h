#pragma once

#include <string>

// What a request may reach, by what it is about to do (Landlock). Without Landlock it goes on as it is, and a
// line on standard error says so when FILEMAN_CONFINEMENT is "report".
namespace reach {

// Lists, pages and views: reads below /home and the time zone. Writes, creates, removes
// and starts nothing.
void confineToReading();
// A streamed download: also reads what the locale of UTF-8 is made of.
void confineToStreaming();

// Deliveries that are put together in /tmp. They never write below /home.
enum class Delivery { Download, Pdf };
void confineToStaging(Delivery delivery);

// The places of one command among those of its delivery.
struct CommandPlaces {
    std::string writes;  // the directory below which it may do everything
    std::string reads;   // a file beside it
    std::string removes; // the directory below which it may remove files
};

// A child that is about to become a command, and one that is about to become the converter.
void confineCommand(const CommandPlaces& places);
void confineConverter();

} // namespace reach
