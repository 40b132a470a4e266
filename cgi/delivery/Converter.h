#pragma once

// The instrument's program that makes PDFs of the task list's files.
namespace converter {

// Runs it and waits for its end, however long that takes. Whatever it has started and left running is ended
// then, and it ends itself with this process, so that nothing of this request writes among the files of the
// next one. A signal that ends the request goes on to all of it.
//
// True when it ended by itself and reported success; else there is a line on standard error, and it may have
// left half a file. One that is not there counts as success: it has made nothing.
bool run();

} // namespace converter
