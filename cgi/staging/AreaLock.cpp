#include "cgi/staging/AreaLock.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <thread>
#include <utility>

#include "cgi/staging/OwnPlace.h"
#include "common/Report.h"

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPause{20};
constexpr mode_t kLockMode = 0600;

std::pair<time_t, long> lastSignOfLife(const UniqueFd& lock) {
    struct stat status = {};
    ::fstat(lock.get(), &status);
    return {status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

// Whether nobody reads the pipe or socket of standard output any more. False for a file.
bool isReaderGone() {
    pollfd output = {STDOUT_FILENO, 0, 0};
    return ::poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

} // namespace

// The lock file must be this user's own: another user could hold a lock on their own file for ever. It must
// have one hard link: a second name may belong to any file of ours. A wrong file is not removed, even by
// root, because the removal could hit the lock file that another request has just made.
UniqueFd AreaLock::openFile(const std::string& path) {
    constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    UniqueFd lock(::open(path.c_str(), kFlags, kLockMode));
    struct stat status = {};
    if (!lock || ::fstat(lock.get(), &status) != 0) {
        reportErrno("open lock", path, errno);
        return {};
    }
    if (!isOwnFile(status)) {
        report("open lock", path, "not this program's own file");
        return {};
    }
    if (status.st_uid == ::geteuid() && (status.st_mode & 07777) != kLockMode)
        ::fchmod(lock.get(), kLockMode);
    return lock;
}

AreaLock::AreaLock(UniqueFd file, const std::function<UniqueFd()>& openAgain, const std::string& path,
                   std::chrono::milliseconds longestWait) {
    while (file && wait(file, path, longestWait)) {
        // A clean-up of /tmp may have removed the file for which requests still waited.
        if (bearsName(file, path)) {
            m_file = std::move(file);
            m_signOfLife.emplace(m_file.get());
            return;
        }
        file = openAgain();
    }
}

bool AreaLock::wait(const UniqueFd& file, const std::string& path, std::chrono::milliseconds longestWait) {
    auto sign = lastSignOfLife(file);
    auto deadline = steady_clock::now() + longestWait;
    for (;;) {
        m_isAbandoned = isReaderGone();
        if (m_isAbandoned) {
            report("take lock", path, "nobody waits for the answer any more");
            return false;
        }
        if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0)
            return true;
        if (errno != EWOULDBLOCK && errno != EINTR) {
            reportErrno("take lock", path, errno);
            return false;
        }
        const auto now = lastSignOfLife(file);
        if (std::exchange(sign, now) != now)
            deadline = steady_clock::now() + longestWait;
        if (steady_clock::now() >= deadline) {
            report("take lock", path, "held by a request that gives no sign of life");
            return false;
        }
        std::this_thread::sleep_for(kPause);
    }
}
