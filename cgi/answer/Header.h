#pragma once

#include <string>
#include <string_view>

enum class Status { Ok, BadRequest, NotFound, MethodNotAllowed, Failed, Busy };

// The header of a strict answer (RFC 3875): status, type, the caller's lines, the lines that stop a browser
// from running or sharing the answer, and the number of places that could not be read.
class Header {
public:
    // What a browser may do with the body: run our scripts (for our pages), or nothing (for stored files).
    enum class Policy { Page, File };

    Header(Status status, Policy policy, std::string_view contentType);

    Header& add(std::string_view name, std::string_view value);
    // Adds the exact number of bytes of the body.
    Header& addLength(long long size);

    // Writes the header. Call it once, after every step that may find an unreadable place. The answer to a
    // HEAD request ends here: everything that is written later is dropped.
    void write() const;

private:
    std::string m_lines;
    Policy m_policy;
};

inline constexpr std::string_view kHtmlType = "text/html; charset=utf-8";

// Writes the header of a page, default or strict.
void writePageHeader();

// Returns how many places of the storage this process could not read so far. A missing directory does not
// count.
std::size_t unreadPlaces();
