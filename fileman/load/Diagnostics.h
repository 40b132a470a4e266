#pragma once

#include <string_view>

// The lines that tell what a load has found in directories of some kinds.
namespace diagnostics {

// Where the lines go from now on. Clients of the default answers expect them on standard output, in front of
// the response's header; that is where they go until somebody says otherwise.
void sendToStandardError();

// One line, without its line end.
void write(std::string_view line);

// What is held back for standard error goes out; before the process ends.
void flush();

} // namespace diagnostics
