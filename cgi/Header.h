#pragma once

#include <string>
#include <string_view>

enum class Status { Ok, BadRequest, NotFound, MethodNotAllowed, Failed, Busy };

// The header of a strict answer (RFC 3875): status, type, what else the caller adds, the lines that keep a
// browser from running or sharing what it gets, and the number of places that could not be read.
class Header {
public:
    // What a browser may do with the body: run our scripts (a page of ours), or nothing (what is stored).
    enum class Policy { Page, File };

    Header(Status status, Policy policy, std::string_view contentType);

    Header& add(std::string_view name, std::string_view value);
    // The exact number of bytes of the body.
    Header& addLength(long long size);

    // Once, after everything that may still find an unreadable place. The answer to a HEAD request ends here:
    // what is written afterwards goes nowhere.
    void write() const;

private:
    std::string m_lines;
    Policy m_policy;
};

inline constexpr std::string_view kHtmlType = "text/html; charset=utf-8";

// The header of a page of either kind.
void writePageHeader();

// How many places of the storage this process could not read so far; a missing directory is no such place.
std::size_t unreadPlaces();
