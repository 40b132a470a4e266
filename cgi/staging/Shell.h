#pragma once

#include <string>

namespace shell {

// What run returns beside the command's own status: a command that a signal ended has 128 and the signal's
// number.
inline constexpr int kNoShell = -1;
inline constexpr int kCannotBeStarted = 126; // above all: too many arguments

// Runs command by system(3) with its standard output on standard error, so that what zip and cp print cannot
// stand in the response and a command left in the background cannot hold the response open. Buffered output
// goes out first. The command inherits inheritedFd when that is none of -1. Returns its exit status.
int run(const std::string& command, int inheritedFd);

} // namespace shell
