#pragma once

#include <string>
#include <string_view>

// The existing file that path leads to, links followed; "" with errno set when that cannot be told.
std::string resolveLinks(const std::string& path);

// Replaces the existing file at path by content so that, whatever is interrupted and whenever, the path names
// either the whole old or the whole new file (rename(2) over it, after both data and name are on disk). Mode
// and, where permitted, owner and group are kept; a symbolic link keeps pointing at the replaced file.
// False when any step fails, after a line on standard error: the old file stands then, or the new one when
// only its name could not be made durable.
bool replaceFile(const std::string& path, std::string_view content);
