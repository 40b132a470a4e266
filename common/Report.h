#pragma once

#include <string_view>

// Writes one line to standard error, the web server's log: "fileman: <what> <subject>: <why>".
// Control bytes of the subject appear as '?', so that a hostile file name cannot forge a log line.
void report(std::string_view what, std::string_view subject, std::string_view why);

// The same with the text of an errno value as the reason.
void reportErrno(std::string_view what, std::string_view subject, int errorNumber);

// The same, but in silence when the value says that nothing is there, or nothing that this user may see or
// reach by that path: such places are skipped as a rule. True for the others, failures of the system.
bool reportUnlessAbsent(std::string_view what, std::string_view subject, int errorNumber);
