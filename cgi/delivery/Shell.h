#pragma once

#include <string>

namespace shell {

// Runs command by system(3) with its standard output on standard error, so that what zip and cp print cannot
// stand in the response and a command left in the background cannot hold the response open. Buffered output
// goes out first. The command inherits inheritedFd when that is none of -1; its result is not looked at.
void run(const std::string& command, int inheritedFd);

} // namespace shell
