#pragma once

#include <string>

// Both functions remove a link itself, never its target. Each entry that could not be removed is reported on
// standard error, and the result is false.

// Removes the file or directory tree at path. A missing path is a success.
bool removeTree(const std::string& path);

// Removes everything in the directory, also names with a leading dot.
bool emptyDirectory(const std::string& path);
