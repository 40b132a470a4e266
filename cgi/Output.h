#pragma once

#include <string_view>

// The response on its way to standard output. It ends where writing it first failed: a response with a hole
// would look whole.
namespace output {

// Buffers what stdio writes to standard output, and sends it through write. Once, before anything is written.
void open();

// Writes all of the text, past what stdio still holds. The first failure leaves a line on standard error;
// then and ever after nothing is written and the result is false.
bool write(std::string_view text);

// Ends the response here, for a writer that has reported a failure of its own.
void stop();
bool isStopped();

} // namespace output
