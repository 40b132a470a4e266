#pragma once

#include <string>

// Both remove links themselves, never what they lead to. False when something stayed, with a line on standard
// error for each.

// Whatever stands at path, if anything.
bool removeTree(const std::string& path);

// Everything in the directory, names with a leading dot too.
bool emptyDirectory(const std::string& path);
