#pragma once

#include <string>
#include <string_view>

// Returns the existing file that path leads to, after all links. Returns "" with errno set on failure.
std::string resolveLinks(const std::string& path);

// Replaces the existing file at path by content. At every moment the path names either the whole old file or
// the whole new file, even after a crash: the new file is written to disk, then renamed over the old one,
// then the directory is written to disk. The mode is kept, and owner and group where permitted. A symbolic
// link keeps pointing at the replaced file.
//
// Returns false, with a line on standard error, when any step fails. Then the old file is still in place;
// after a failure of the last step it is the new file, whose name may not be on disk yet.
bool replaceFile(const std::string& path, std::string_view content);
