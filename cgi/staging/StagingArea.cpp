#include "cgi/staging/StagingArea.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <thread>
#include <utility>

#include "cgi/staging/OwnPlace.h"
#include "cgi/staging/RemoveTree.h"
#include "cgi/staging/Shell.h"
#include "common/Report.h"
#include "common/WriteAll.h"

using Order = TmpKeeper::Order;

StagingArea::StagingArea(StagingPlaces places)
    : m_places(std::move(places)), m_keeper(m_places), m_lockFile(m_keeper.open(Order::OpenLock)) {
    if (!m_lockFile || !m_keeper.give(Order::ClaimDirectory))
        return;
    m_directory = UniqueFd(::open(m_places.directory.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!m_directory)
        reportErrno("open", m_places.directory, errno);
    m_isOwn = static_cast<bool>(m_directory);
}

void StagingArea::takeTurn(std::chrono::milliseconds longestWait) {
    const auto openAgain = [this] { return m_keeper.open(Order::OpenLock); };
    m_lock.emplace(std::move(m_lockFile), openAgain, m_places.lock, longestWait);
    if (!isHeld() || !m_isOwn || !m_keeper.give(Order::ClaimDirectory))
        return;
    // A clean-up of /tmp may have removed the directory that this request may write in.
    m_isUsable = bearsName(m_directory, m_places.directory);
    if (!m_isUsable)
        report("use directory", m_places.directory, "it was replaced during the wait");
}

bool StagingArea::removeLeftovers() const {
    return m_isUsable && emptyDirectory(m_places.directory) && m_keeper.give(Order::RemoveArchive);
}

int StagingArea::run(const std::string& command) const {
    if (!m_isUsable)
        return shell::kNoShell;
    return shell::run(command, m_lock->descriptor(), {m_places.directory, m_places.archive, {}});
}

bool StagingArea::createArchive(std::string_view content) const {
    return m_isUsable && writeWhole(Order::CreateArchive, content, m_places.archive);
}

bool StagingArea::publishArchive() const {
    return m_isUsable && m_keeper.give(Order::PublishArchive);
}

bool StagingArea::writeTaskList(std::string_view lines) const {
    if (!m_isUsable)
        return false;
    if (writeWhole(Order::CreateTaskList, lines, m_places.taskList))
        return m_keeper.give(Order::PublishTaskList);
    m_keeper.give(Order::DropTaskList);
    return false;
}

bool StagingArea::writeWhole(TmpKeeper::Order order, std::string_view content,
                             const std::string& path) const {
    UniqueFd file = m_keeper.open(order);
    if (!file)
        return false;
    if (writeAll(file.get(), content) && file.reset() == 0)
        return true;
    reportErrno("write", path, errno);
    return false;
}

void StagingArea::cleanUp(std::chrono::milliseconds pause) const {
    if (!m_isUsable)
        return;
    std::fflush(stdout);
    std::this_thread::sleep_for(pause);
    m_keeper.give(Order::CleanUp);
}
