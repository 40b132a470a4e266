#include "cgi/staging/StagingArea.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <thread>
#include <utility>

#include "cgi/staging/OwnPlace.h"
#include "cgi/staging/RemoveTree.h"
#include "cgi/staging/Shell.h"
#include "common/CCommUtils.h"

namespace {

// The response ends when no process has its descriptor open any more, so the cleaner closes its copy.
void leaveResponse() {
    const UniqueFd null(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    if (!null || ::dup2(null.get(), STDOUT_FILENO) < 0)
        ::close(STDOUT_FILENO);
}

// Runs the command in a process of its own, which ends after the last process of the command. As subreaper it
// is the parent of these processes even when the shell leaves them in the background.
[[noreturn]] void becomeCleaner(const std::string& command, int lock, const reach::CommandPlaces& places) {
    leaveResponse();
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const SignOfLife signOfLife(lock);
    shell::run(command, lock, places);
    while (::wait(nullptr) > 0 || errno == EINTR) {
    }
    ::_exit(0);
}

} // namespace

StagingArea::StagingArea(Places places, std::chrono::milliseconds longestWait)
    : m_places(std::move(places)), m_lock(m_places.lock, longestWait),
      m_usable(m_lock.isHeld() && claimDirectory(m_places.directory)) {}

bool StagingArea::removeLeftovers() const {
    return m_usable && emptyDirectory(m_places.directory) && removeTree(m_places.archive);
}

int StagingArea::run(const std::string& command) const {
    return run(command, {m_places.directory, m_places.archive, {}});
}

int StagingArea::runBesideArchive(const std::string& command) const {
    return run(command, {CCommUtils::absFilePath(m_places.archive), {}, {}});
}

int StagingArea::run(const std::string& command, const reach::CommandPlaces& places) const {
    return m_usable ? shell::run(command, m_lock.descriptor(), places) : shell::kNoShell;
}

void StagingArea::cleanUp(const std::string& command, std::chrono::milliseconds pause) const {
    if (!m_usable)
        return;
    std::fflush(stdout);
    std::this_thread::sleep_for(pause);
    const reach::CommandPlaces places = {{}, {}, CCommUtils::absFilePath(m_places.archive)};
    const pid_t cleaner = ::fork();
    if (cleaner == 0)
        becomeCleaner(command, m_lock.descriptor(), places);
    if (cleaner < 0)
        run(command, places);
}
