#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "cgi/staging/AreaLock.h"
#include "cgi/staging/TmpKeeper.h"

// One of the two places below /tmp where a delivery collects its files: a directory that every request fills
// and empties, and the archive made from it.
//
// It is made before the request confines itself: from then on the request writes below the directory only,
// and a process of its own does the rest (TmpKeeper.h).
//
// Requests for the same area take turns. The lock is free again when this process and every command that it
// started in the area have ended, even when the process was killed.
class StagingArea {
public:
    // Opens the lock file and makes the directory this user's own. Does not wait for the turn.
    explicit StagingArea(StagingPlaces places);

    const StagingPlaces& places() const { return m_places; }
    // Whether the lock file and the directory are this user's own. Otherwise the turn never comes.
    bool isOwn() const { return m_isOwn; }

    // Waits for the turn of this request. longestWait: the longest time without a sign of life from the
    // holder of the area. While the queue moves, the wait has no limit.
    void takeTurn(std::chrono::milliseconds longestWait = AreaLock::kLongestSilence);

    // Whether the area is held and its directory is this user's own. Otherwise nothing may be run, removed or
    // sent there.
    bool isUsable() const { return m_isUsable; }
    // The lock is held, whatever the directory is like.
    bool isHeld() const { return m_lock && m_lock->isHeld(); }
    // Whether the wait ended because nobody reads the answer any more.
    bool isAbandoned() const { return m_lock && m_lock->isAbandoned(); }

    // Removes the leftovers of a killed request: everything in the directory, and the archive. Returns false
    // when something could not be removed.
    bool removeLeftovers() const;

    // Runs a shell command that writes in the directory and reads the archive. Returns the same as
    // shell::run, and kNoShell when the area is not usable.
    int run(const std::string& command) const;

    // Makes the archive with this content, and moves the complete one from places().newArchive to its place.
    bool createArchive(std::string_view content) const;
    bool publishArchive() const;
    // Makes the task list of the converter. It never has its path before it is complete.
    bool writeTaskList(std::string_view lines) const;

    // Gives the server the pause to take the body, then starts the removal of the files. It goes on after the
    // end of the request, and holds the area.
    void cleanUp(std::chrono::milliseconds pause) const;

private:
    bool writeWhole(TmpKeeper::Order order, std::string_view content, const std::string& path) const;

    StagingPlaces m_places;
    TmpKeeper m_keeper;
    UniqueFd m_lockFile;
    UniqueFd m_directory; // the claimed one
    std::optional<AreaLock> m_lock;
    bool m_isOwn = false;
    bool m_isUsable = false;
};
