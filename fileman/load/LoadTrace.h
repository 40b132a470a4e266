#pragma once

#include <string>

#include "fileman/LoadInfo.h"

// The lines that a load writes about what it found in some kinds of directories.
namespace trace {

// Sends all later lines to standard error. Without this call they go to standard output, before the response
// header, where clients of the default answers expect them.
void sendToStandardError();

// Writes how many files were found in a tree of the module Common.
void writeCommonCount(Half half, int count);

// Writes the path of a file that was found in an extra directory.
void writeFoundAt(const std::string& path);

// Writes the lines that are buffered for standard error. Call it before the process ends.
void flush();

} // namespace trace
