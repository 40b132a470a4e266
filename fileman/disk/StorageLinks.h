#pragma once

#include <string>
#include <vector>

#include "common/UniqueFd.h"

// The storage directory, kept open. Files below it are opened name by name from its descriptor, so that a
// process that moves or replaces names at the same time cannot lead to another place. Links are followed if
// their target is below the storage directory.
class StorageLinks {
public:
    // path: absolute and without links below "/". An open fails when the directory cannot be opened.
    explicit StorageLinks(const std::string& path);

    // Opens an absolute path. flags: as for open(2), for the last component; O_NOFOLLOW and O_CLOEXEC are
    // added. On failure returns no descriptor, with errno set: EXDEV if the path or a link in it leads out of
    // the storage.
    UniqueFd open(const std::string& path, int flags) const;

private:
    UniqueFd openPlace(const std::vector<std::string>& place) const;

    std::vector<std::string> m_place; // the components of the path
    UniqueFd m_descriptor;
};
