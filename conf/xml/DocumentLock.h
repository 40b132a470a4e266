#pragma once

#include <string>

#include "common/UniqueFd.h"

// The lock that a writer of a document holds: on the directory of the document (flock), during the lifetime
// of this object. The file itself cannot be locked, because each writer replaces it.
class DocumentLock {
public:
    DocumentLock() = default;

    // Locks the document at path, in which links are resolved. Waits up to ten seconds for other writers. A
    // failure is reported on standard error.
    explicit DocumentLock(const std::string& path);

    bool isHeld() const { return static_cast<bool>(m_directory); }

private:
    UniqueFd m_directory;
};
