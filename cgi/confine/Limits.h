#pragma once

namespace limits {

// Sets limits for this process and its children: processor time, address space, size of a written file, open
// files. Environment variables choose other values; 0 leaves the limit of the web server. A lower limit of
// the web server always stays. Core files are switched off, because they would hold what the request has
// read.
void apply();

// Gives the converter as much address space as the web server allows. Call it in the child.
void liftForConverter();

} // namespace limits
