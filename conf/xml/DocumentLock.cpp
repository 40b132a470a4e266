#include "conf/xml/DocumentLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "common/CCommUtils.h"
#include "common/Report.h"
#include "common/Retry.h"

namespace {

// The waits add up to ten seconds. A writer needs a few milliseconds, so after this time the lock is stuck.
constexpr int kMostWaits = 2000;
constexpr auto kWait = std::chrono::milliseconds(5);

// Returns 0, or an errno value. It is EWOULDBLOCK when another process still holds the lock.
int takeLock(int directory) {
    for (int waits = 0; retryInterrupted([&] { return ::flock(directory, LOCK_EX | LOCK_NB); }) != 0;
         ++waits) {
        if (errno != EWOULDBLOCK || waits == kMostWaits)
            return errno;
        std::this_thread::sleep_for(kWait);
    }
    return 0;
}

} // namespace

DocumentLock::DocumentLock(const std::string& path) {
    const std::string directory = CCommUtils::absFilePath(path) + "/";
    m_directory = UniqueFd(
        retryInterrupted([&] { return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    const int error = m_directory ? takeLock(m_directory.get()) : errno;
    if (error == 0)
        return;
    m_directory.reset();
    if (error == EWOULDBLOCK)
        report("lock directory", directory, "still held by another writer");
    else
        reportErrno("lock directory", directory, error);
}
