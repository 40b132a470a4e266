// The removal of trees, for the sources of the support library.
#pragma once

// Removes the directory tree at `path`; with `force` also files. Logs each object that stays. Returns true if
// nothing is left. `removed` (may be null) is set if there was something to remove.
bool removeTree(const char* path, bool force, bool* removed);

// Removes the object at `path` unless it is a directory, also one that another process makes at the same
// time. Logs a failure.
void removeUnlessDirectory(const char* path);
