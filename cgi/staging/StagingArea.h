#pragma once

#include <chrono>
#include <string>

#include "cgi/confine/Reach.h"
#include "cgi/staging/AreaLock.h"

// One of the two places below /tmp where a delivery collects its files: a directory that every request fills
// and empties, and the archive made from it.
//
// Requests for the same area take turns: the constructor waits for the lock of the area. The lock is free
// again when this process and every command that it started in the area have ended, even when the process was
// killed.
class StagingArea {
public:
    struct Places {
        std::string directory;
        std::string archive;
        std::string lock;
    };

    static constexpr std::chrono::seconds kPause{1};

    // longestWait: the longest time without a sign of life from the holder of the area. While the queue
    // moves, the wait has no limit.
    explicit StagingArea(Places places, std::chrono::milliseconds longestWait = AreaLock::kLongestWait);

    const Places& places() const { return m_places; }

    // Whether the area is held and its directory is this user's own. Otherwise nothing may be run, removed or
    // sent there.
    bool isUsable() const { return m_usable; }
    // The lock is held, whatever the directory is like.
    bool isHeld() const { return m_lock.isHeld(); }
    // Whether the wait ended because nobody reads the answer any more.
    bool isAbandoned() const { return m_lock.isAbandoned(); }

    // Removes the leftovers of a killed request: everything in the directory, and the archive. Returns false
    // when something could not be removed.
    bool removeLeftovers() const;

    // Runs a shell command that writes in the directory only. Returns the same as shell::run, and kNoShell
    // when the area is not usable.
    int run(const std::string& command) const;
    // The same for a command that also writes the archive and temporary files beside it.
    int runBesideArchive(const std::string& command) const;

    // Gives the server the pause to take the body, then runs the command that removes the files. The request
    // does not wait for that command: a process of its own holds the area, with signs of life, until the
    // command has ended.
    void cleanUp(const std::string& command, std::chrono::milliseconds pause = kPause) const;

private:
    int run(const std::string& command, const reach::CommandPlaces& places) const;

    Places m_places;
    AreaLock m_lock;
    bool m_usable;
};
