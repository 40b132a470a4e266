#pragma once

#include <string_view>

// Writes one line to standard error, the web server's log: "fileman: <what> <subject>: <why>".
// Control bytes of the subject appear as '?', so that a hostile file name cannot forge a log line.
void report(std::string_view what, std::string_view subject, std::string_view why);

// The same with the text of an errno value as the reason.
void reportErrno(std::string_view what, std::string_view subject, int errorNumber);

// The same, but writes nothing when the value says that the path is missing or not accessible to this user:
// the program skips such places. Returns true for every other value, which is a failure of the system.
bool reportUnlessAbsent(std::string_view what, std::string_view subject, int errorNumber);
