#pragma once

#include <string_view>

// Writes the whole text to a descriptor, however many write(2) calls it takes. False with errno set when the
// system refuses.
bool writeAll(int fd, std::string_view text);

// Whether a call that failed to write to the descriptor may be made again: it was interrupted, or the
// descriptor was full and does not block; then it can take something now.
bool mayWriteAgain(int fd, int errorNumber);
