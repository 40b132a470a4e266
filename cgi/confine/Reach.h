#pragma once

#include <string>

// Which files each kind of request may reach (Landlock). Without Landlock the request continues without
// rules; if FILEMAN_CONFINEMENT is "report", a line on standard error says so.
namespace reach {

// For lists, pages and views. They read below /home and the time zone. They write, create, remove and run
// nothing.
void confineToReading();
// For a streamed download, which also reads the files of the UTF-8 locale.
void confineToStreaming();

// For deliveries that collect their files in a directory of theirs. They write only below it. Everything in
// /tmp may be read; zip and the converter read files there.
enum class Delivery { Download, Pdf };
void confineToStaging(Delivery delivery, const std::string& directory);
// For the process that keeps the places of a delivery. It may write below this directory, and start the
// removal.
void confineKeeper(const std::string& directory);

// What one command of a delivery may reach; an empty path allows nothing.
struct CommandPlaces {
    std::string writes;  // it may do everything below this directory
    std::string reads;   // it may read this file
    std::string removes; // it may remove files below this directory
};

// For a child process, before it becomes a command or the converter.
void confineCommand(const CommandPlaces& places);
void confineConverter();

} // namespace reach
