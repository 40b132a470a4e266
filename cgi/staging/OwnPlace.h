#pragma once

#include <sys/stat.h>

#include <string>

#include "common/UniqueFd.h"

// Fixed names in /tmp, where every user of the machine may have put something else: a file, a link, a FIFO, a
// directory, now or between two calls. What bears the name after a success is this program's own, and in a
// directory with the sticky bit it stays so. A failure gets a line on standard error.

// Whether a directory stands at path itself; a link to one is none.
bool isDirectory(const std::string& path);

// Whether this user or root owns it.
bool isOwn(const struct stat& status);

// Whether it is a file of this user or root that nobody reaches under a second name.
bool isOwnFile(const struct stat& status);

// Makes path a directory in which nobody else can write. A directory of another user moves to a new name
// "<path>.foreign.XXXXXX" with all it holds; whatever else stood there goes.
bool claimDirectory(const std::string& path);

// Makes path a new file and opens it for writing; what stood there goes, a foreign directory moves away.
UniqueFd createOwnFile(const std::string& path, mode_t mode);

// Gives the file "from" the name "to" in one step, so that "to" is never free for somebody else.
bool moveOver(const std::string& from, const std::string& to);
