#pragma once

#include <chrono>
#include <string>

#include "common/UniqueFd.h"

// One of the two places below /tmp where a delivery puts its files together: a directory that every request
// fills and empties, and the archive made from it.
//
// Requests for the same area take turns. The constructor waits for the area's lock; the lock is free again
// when this process and every command it started here have ended, also when the process was killed.
class StagingArea {
public:
    struct Places {
        std::string directory; // a trailing '/' does no harm
        std::string archive;
        std::string lock;
    };

    static constexpr std::chrono::seconds kLongestWait{30};

    // When one holder keeps the lock for longestWait, the area is used without it, with a line on standard
    // error. A queue that moves is waited out.
    explicit StagingArea(Places places, std::chrono::milliseconds longestWait = kLongestWait);

    bool isLocked() const { return m_locked; }
    // False when somebody else's directory or link stands in the area's place and cannot be moved away.
    bool isUsable() const { return m_usable; }

    // Removes what a killed request left: everything in the directory, and the archive.
    void removeLeftovers() const;

    // Leaves plain files and directories below path, which lies in the directory: a link to a stored file
    // becomes a copy of it, everything else goes. The next copy into path would write through a link or wait
    // for ever at a FIFO, and the packer follows links into whatever they lead to, loops included.
    void keepPlainFiles(const std::string& path) const;

    // Runs a shell command that works on the area; nothing when the area is not usable.
    void run(const std::string& command) const;

private:
    Places m_places;
    UniqueFd m_lock;
    bool m_locked = false;
    bool m_usable = false;
};
