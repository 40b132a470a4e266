#pragma once

#include <sys/stat.h>

#include <string>

#include "common/UniqueFd.h"

// Functions for fixed names in /tmp. Every user of the machine may have put a file, link, FIFO or directory
// there, even between two calls. After a success the name belongs to this program, and in a directory with
// the sticky bit it stays so. A failure is reported on standard error.

// Whether path itself is a directory. False for a link to a directory.
bool isDirectory(const std::string& path);

// Whether this user or root is the owner.
bool isOwn(const struct stat& status);

// Whether it is a regular file of this user or root with one hard link.
bool isOwnFile(const struct stat& status);

// Whether the opened file or directory is still the one at path.
bool bearsName(const UniqueFd& opened, const std::string& path);

// Makes path a directory in which nobody else can write. A directory of another user is moved to the new name
// "<path>.foreign.XXXXXX" with its contents; anything else at path is removed.
bool claimDirectory(const std::string& path);

// Makes a new file at path and opens it for writing. A directory of another user is moved away; anything else
// at path is removed.
UniqueFd createOwnFile(const std::string& path, mode_t mode);

// Renames the file "from" to "to" in one step, so that "to" is never free for another user.
bool moveOver(const std::string& from, const std::string& to);
