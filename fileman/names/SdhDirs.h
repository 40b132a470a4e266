#pragma once

#include <string>

// The directories of the SDH family. These are below a port and have no mode directory above them.
namespace sdh {

// Whether the directory at path, with this name, is one of them.
bool isDir(const std::string& name, const std::string& path);

// Returns the key of the test type that such a directory means.
std::string typeKey(const std::string& name);

} // namespace sdh
