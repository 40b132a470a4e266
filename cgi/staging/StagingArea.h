#pragma once

#include <chrono>
#include <string>

#include "cgi/staging/AreaLock.h"

// One of the two places below /tmp where a delivery puts its files together: a directory that every request
// fills and empties, and the archive made from it.
//
// Requests for the same area take turns: the constructor waits for the area's lock, which is free again when
// this process and every command it started here have ended, also when the process was killed.
class StagingArea {
public:
    struct Places {
        std::string directory;
        std::string archive;
        std::string lock;
    };

    static constexpr std::chrono::seconds kLongestWait{30};

    // longestWait: for one sign of life of the request that holds the area. A queue that moves is waited out.
    explicit StagingArea(Places places, std::chrono::milliseconds longestWait = kLongestWait);

    const Places& places() const { return m_places; }

    // The area is held, and its directory is this user's own. Nothing may be run, emptied or sent otherwise.
    bool isUsable() const { return m_usable; }
    // Nobody is there to take an answer.
    bool isAbandoned() const { return m_lock.isAbandoned(); }

    // Removes what a killed request left: everything in the directory, and the archive. False when something
    // stays.
    bool removeLeftovers() const;

    // Runs a shell command that works on the area. Returns its status as shell::run does; kNoShell when the
    // area is not usable.
    int run(const std::string& command) const;

    // Gives the server a second to take the body, then runs the command that removes the files behind it. The
    // request need not wait for that command: the area is held, and gives a sign of life, until its processes
    // have ended.
    void cleanUp(const std::string& command) const;

private:
    Places m_places;
    AreaLock m_lock;
    bool m_usable;
};
