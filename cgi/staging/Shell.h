#pragma once

#include <string>

#include "cgi/confine/Reach.h"

namespace shell {

// Two special results of run.
inline constexpr int kNoShell = -1;
inline constexpr int kCannotBeStarted = 126; // mostly because of too many arguments

// Runs command by system(3) with its standard output on standard error. So the output of zip and cp cannot
// get into the response, and a command in the background cannot keep the response open. Buffered output is
// written first. The command inherits inheritedFd unless that is -1. Returns the exit status; 128 plus the
// signal number for a command that a signal ended; kNoShell when no shell could be run.
// The command reaches its places and no others.
int run(const std::string& command, int inheritedFd, const reach::CommandPlaces& places);

} // namespace shell
