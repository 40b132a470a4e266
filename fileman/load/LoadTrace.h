#pragma once

#include <string_view>

// The diagnostic lines of a load, about what it found in some kinds of directories.
namespace trace {

// Sends all later lines to standard error. Without this call they go to standard output, before the response
// header, where clients of the default answers expect them.
void sendToStandardError();

// Writes one line. The text has no line end.
void write(std::string_view line);

// Writes the lines that are buffered for standard error. Call it before the process ends.
void flush();

} // namespace trace
