#pragma once

#include <string_view>

// Writes the response to standard output. The response ends where a write first fails: a response with a gap
// would look whole.
namespace output {

// Gives stdio a buffer for standard output that is sent through write. Call it once, before anything is
// written.
void open();

// Writes all of the text at once; it does not go through stdio's buffer. The first failure is reported on
// standard error. From then on nothing is written and the result is false.
bool write(std::string_view text);

// Ends the response here. For a writer that has already reported its own failure.
void stop();
bool isStopped();

} // namespace output
