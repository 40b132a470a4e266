#pragma once

// The instrument's program that makes a PDF of each file in the task list.
namespace converter {

// Runs the converter and waits for its end without a time limit. Then every process that it left running is
// killed. The converter is also killed when this process ends. So no process of this request writes among the
// files of the next one. A signal that ends the request is passed on to the whole group.
//
// Returns true when the converter ended by itself and reported success. Otherwise there is a line on standard
// error, and the converter may have left half a file. A missing converter counts as success: it made nothing.
bool run();

} // namespace converter
