#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "cgi/staging/SignOfLife.h"
#include "common/UniqueFd.h"

// The turn of one request in a staging area: an advisory lock on a file. The holder gives a sign of life
// during the lifetime of this object. The lock is free again when this process and every process that
// inherited it have ended.
class AreaLock {
public:
    // A request gives up its wait for a holder that is silent for so long.
    static constexpr std::chrono::seconds kLongestSilence{30};

    // Opens the lock file, makes it if it does not exist. Fails, with a line on standard error, when the file
    // is not this user's own.
    static UniqueFd openFile(const std::string& path);

    // Waits for the turn with the opened lock file. Opens it again when the file has lost its path. The wait
    // fails, with a line on standard error, when a holder gives no sign of life for longestWait, when the
    // file cannot be opened again, or when nobody reads standard output any more.
    AreaLock(UniqueFd file, const std::function<UniqueFd()>& openAgain, const std::string& path,
             std::chrono::milliseconds longestWait);

    bool isHeld() const { return m_signOfLife.has_value(); }
    // Whether the wait ended because nobody reads the answer any more.
    bool isAbandoned() const { return m_isAbandoned; }
    // The descriptor that the commands in the area inherit; -1 when the lock is not held.
    int descriptor() const { return m_file.get(); }

private:
    bool wait(const UniqueFd& file, const std::string& path, std::chrono::milliseconds longestWait);

    UniqueFd m_file;
    std::optional<SignOfLife> m_signOfLife;
    bool m_isAbandoned = false;
};
