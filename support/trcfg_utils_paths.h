// The parts of a path, for the sources of the support library.
#pragma once

#include <sys/types.h>

#include "support/trcfg_utils_fileio.h"

// The mode of parent directories that are made. The missing search permission is intentional: the programs of
// the instrument run as root, and no other user should get in.
constexpr mode_t kParentMode = 0644;

// Returns true for a null pointer and an empty text.
bool isMissing(const char* text);

// Returns the part of path after its last slash. It is empty if path ends in a slash.
const char* baseNameOf(const char* path);

// False for a path that can only be a directory. Such a call must fail before anything is removed.
bool canNameFile(const char* path);

// Returns "/" for an entry of the root directory, "." for a path without a slash, and null without memory.
HeapText parentOf(const char* path);
