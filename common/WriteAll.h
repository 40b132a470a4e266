#pragma once

#include <string_view>

// Writes the whole text to a descriptor, with as many write(2) calls as needed. Returns false with errno set
// on failure.
bool writeAll(int fd, std::string_view text);

// Whether a failed write to the descriptor may be repeated. True when the write was interrupted. When a
// non-blocking descriptor was full, this function first waits until it accepts data, then returns true.
bool mayWriteAgain(int fd, int errorNumber);
