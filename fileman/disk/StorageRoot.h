#pragma once

#include <string>
#include <vector>

#include "common/UniqueFd.h"

// The storage directory, held open. What lies below it is opened name by name from its descriptor, so nobody
// who moves or replaces names meanwhile can lead the way elsewhere. Links are followed as long as they lead
// to places below it, by whatever way.
class StorageRoot {
public:
    // path: absolute and without links below "/". An open fails when the directory cannot be opened.
    explicit StorageRoot(const std::string& path);

    // An absolute path. flags: as for open(2), for what the path ends at; O_NOFOLLOW and O_CLOEXEC are added.
    // Nothing with errno set after a failure: EXDEV when the path or a link on it leads out of the storage.
    UniqueFd open(const std::string& path, int flags) const;

private:
    UniqueFd openPlace(const std::vector<std::string>& place) const;

    std::vector<std::string> m_place; // the names on the way from "/"
    UniqueFd m_descriptor;
};
