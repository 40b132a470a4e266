#pragma once

namespace limits {

// Limits what this process and its children may take, before any of it is taken: processor time, address
// space, size of a file that they write, open files. Variables set other values; 0 leaves what the web server
// has set. No core file, which would hold what the request has read. A lower limit of the web server stays.
void apply();

// The converter may take as much address space as the web server allows.
void liftForConverter();

} // namespace limits
