#include "cgi/delivery/StagingArea.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "cgi/delivery/Shell.h"
#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "common/Report.h"

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLockPoll{20};
constexpr mode_t kLockMode = 0600;
constexpr mode_t kDirectoryMode = 0755;

// A link in place of the archive would be sent or written through, one in place of the lock locks nothing.
void removeUnlessRegular(const std::string& path) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && std::remove(path.c_str()) != 0)
        reportErrno("remove", path, errno);
}

// /tmp is everybody's: no link is followed, and a planted FIFO does not block.
UniqueFd openLock(const std::string& path) {
    removeUnlessRegular(path);
    UniqueFd lock(
        ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, kLockMode));
    if (!lock)
        reportErrno("open lock", path, errno);
    return lock;
}

// When the lock last changed hands: whoever takes it touches the file.
std::pair<time_t, long> lastTaken(const UniqueFd& lock) {
    struct stat status = {};
    ::fstat(lock.get(), &status);
    return {status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

// Waits for one holder that makes no way, not for the place in the queue: as long as others get their turn
// this request will get its own, and going on without the lock would spoil two answers.
bool waitForLock(const UniqueFd& lock, const std::string& path, std::chrono::milliseconds longestWait) {
    auto taken = lastTaken(lock);
    auto deadline = steady_clock::now() + longestWait;
    while (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            reportErrno("take lock", path, errno);
            return false;
        }
        const auto now = lastTaken(lock);
        if (std::exchange(taken, now) != now)
            deadline = steady_clock::now() + longestWait;
        if (steady_clock::now() >= deadline) {
            report("take lock", path, "still held by another request, going on without it");
            return false;
        }
        std::this_thread::sleep_for(kLockPoll);
    }
    return true;
}

bool takeLock(const UniqueFd& lock, const std::string& path, std::chrono::milliseconds longestWait) {
    if (!lock || !waitForLock(lock, path, longestWait))
        return false;
    ::futimens(lock.get(), nullptr);
    return true;
}

bool isOwn(const struct stat& status) {
    return status.st_uid == ::geteuid() || status.st_uid == 0;
}

// Moves away what another user put where the area's directory belongs. A directory keeps its contents under
// another name: deleting in it could be led elsewhere by its owner.
bool moveAway(const std::string& path, bool isDirectory) {
    report("use directory", path, "not a directory of this program, moving it away");
    const std::string aside = std::string(path).append(".foreign.").append(std::to_string(::getpid()));
    const int result = isDirectory ? std::rename(path.c_str(), aside.c_str()) : ::unlink(path.c_str());
    if (result != 0)
        reportErrno("move away", path, errno);
    return result == 0;
}

// Makes sure that path is a directory which nobody but this program's user (or root) can exchange for a link:
// the clean-up command deletes whatever it leads to.
bool claimDirectory(const std::string& path) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode) && isOwn(status))
            return true;
        if (!moveAway(path, S_ISDIR(status.st_mode)))
            return false;
    }
    if (::mkdir(path.c_str(), kDirectoryMode) == 0)
        return true;
    reportErrno("make directory", path, errno);
    return false;
}

std::vector<std::string> readNames(const std::string& path) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(path.c_str()), &::closedir);
    if (!directory)
        return names;
    while (const dirent* const entry = ::readdir(directory.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    return names;
}

void emptyDirectory(const std::string& path);

// Never follows a link: unlink refuses directories only, and only those are descended into.
void removeTree(const std::string& path) {
    if (::unlink(path.c_str()) == 0 || errno == ENOENT)
        return;
    if (errno == EISDIR || errno == EPERM) {
        // A copy of a write-protected directory cannot be emptied otherwise.
        ::chmod(path.c_str(), S_IRWXU);
        emptyDirectory(path);
        if (::rmdir(path.c_str()) == 0)
            return;
    }
    reportErrno("remove", path, errno);
}

void emptyDirectory(const std::string& path) {
    for (const std::string& name : readNames(path))
        removeTree(std::string(path).append("/").append(name));
}

bool isStoredFile(const std::string& link) {
    struct stat status = {};
    if (::stat(link.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    const std::unique_ptr<char, void (*)(void*)> target(::realpath(link.c_str(), nullptr), &std::free);
    // A relative link leads to its neighbour, which was staged with it.
    return target && (CCommUtils::isStartsWith(target.get(), std::string(paths::kHome) + "/") ||
                      CCommUtils::isStartsWith(target.get(), paths::kDownloadDir));
}

bool copyContent(const UniqueFd& from, const UniqueFd& to) {
    constexpr std::size_t kLargestCall = 1 << 30;
    ssize_t count = 0;
    do {
        count = ::sendfile(to.get(), from.get(), nullptr, kLargestCall);
    } while (count > 0 || (count < 0 && errno == EINTR));
    return count == 0;
}

// scratch: a path that nothing stands at, on the same file system.
bool replaceByCopy(const std::string& link, const std::string& scratch) {
    constexpr mode_t kMode = 0644;
    const UniqueFd from(::open(link.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    UniqueFd to(::open(scratch.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode));
    if (from && to && copyContent(from, to) && to.reset() == 0 &&
        std::rename(scratch.c_str(), link.c_str()) == 0)
        return true;
    reportErrno("pack", link, errno);
    ::unlink(scratch.c_str());
    return false;
}

void keepPlainFile(const std::string& path, const std::string& scratch) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode))
        return;
    if (S_ISDIR(status.st_mode)) {
        for (const std::string& name : readNames(path))
            keepPlainFile(std::string(path).append("/").append(name), scratch);
        return;
    }
    if (S_ISLNK(status.st_mode) && isStoredFile(path)) {
        if (replaceByCopy(path, scratch))
            return;
    } else {
        report("pack", path, "left out, neither a plain file nor a link to a stored one");
    }
    if (::unlink(path.c_str()) != 0)
        reportErrno("remove", path, errno);
}

} // namespace

StagingArea::StagingArea(Places places, std::chrono::milliseconds longestWait)
    : m_places(std::move(places)), m_lock(openLock(m_places.lock)),
      m_locked(takeLock(m_lock, m_places.lock, longestWait)) {
    // With a trailing '/' a link would be followed.
    while (m_places.directory.size() > 1 && m_places.directory.back() == '/')
        m_places.directory.pop_back();
    removeUnlessRegular(m_places.archive);
    m_usable = claimDirectory(m_places.directory);
}

void StagingArea::removeLeftovers() const {
    if (!m_usable)
        return;
    emptyDirectory(m_places.directory);
    if (::unlink(m_places.archive.c_str()) != 0 && errno != ENOENT)
        reportErrno("remove", m_places.archive, errno);
}

void StagingArea::keepPlainFiles(const std::string& path) const {
    // Hidden from the packer, whose "*" does not match it.
    if (m_usable)
        keepPlainFile(path, m_places.directory + "/.copy");
}

void StagingArea::run(const std::string& command) const {
    if (m_usable)
        shell::run(command, m_lock.get());
}
