#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>

#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_proc.h"

namespace {

constexpr int kMicrosPerSecond = 1000000;
constexpr int kLastGraceMicros = 20000;
constexpr long long kLookMicros = 5000;
constexpr const char* kKillWait = "tr_proc_killwait";

// Also true for a process that was reaped elsewhere. False for a living process that is not our child.
bool reapIfGone(pid_t pid) {
    const pid_t reaped = ::waitpid(pid, nullptr, WNOHANG);
    if (reaped == pid)
        return true;
    return reaped < 0 && errno == ECHILD && ::kill(pid, 0) != 0 && errno == ESRCH;
}

timeval deadlineAfter(int micros) {
    timeval deadline = {};
    tr_get_clock(&deadline);
    if (micros <= 0)
        return deadline;
    deadline.tv_sec += micros / kMicrosPerSecond;
    deadline.tv_usec += micros % kMicrosPerSecond;
    if (deadline.tv_usec >= kMicrosPerSecond) {
        deadline.tv_usec -= kMicrosPerSecond;
        ++deadline.tv_sec;
    }
    return deadline;
}

long long microsUntil(const timeval& deadline) {
    timeval now = {};
    tr_get_clock(&now);
    const long long seconds = deadline.tv_sec - now.tv_sec;
    return seconds * kMicrosPerSecond + (deadline.tv_usec - now.tv_usec);
}

// Sleeps the whole time, even if signals arrive.
void sleepMicros(long long micros) {
    timespec rest = {};
    rest.tv_sec = static_cast<time_t>(micros / kMicrosPerSecond);
    rest.tv_nsec = static_cast<long>(micros % kMicrosPerSecond) * 1000;
    while (::nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
}

// Checks often, so that the caller does not wait for a child that has ended. Returns true as soon as the
// child is gone, false after the whole time.
bool goneWithin(pid_t pid, int micros) {
    const timeval deadline = deadlineAfter(micros);
    while (!reapIfGone(pid)) {
        const long long left = microsUntil(deadline);
        if (left <= 0)
            return false;
        sleepMicros(std::min(left, kLookMicros));
    }
    return true;
}

// Returns true if the child is gone.
bool waitAWhile(int level, pid_t pid, long long left) {
    if (left >= kMicrosPerSecond) {
        TARN_LOG_AS(kProcSource, kKillWait, level, "wait process(pid=%d) by sleep(1) ...", pid);
        return goneWithin(pid, kMicrosPerSecond);
    }
    const int micros = static_cast<int>(left);
    TARN_LOG_AS(kProcSource, kKillWait, level, "wait process(pid=%d) by usleep(%d) ...", pid, micros);
    return goneWithin(pid, micros);
}

// SIGSEGV instead of SIGKILL is intentional: it leaves a core dump of the program that did not end.
void killHard(int level, pid_t* pid) {
    ::kill(*pid, SIGSEGV);
    TARN_LOG_AS(kProcSource, kKillWait, level, "kill process(pid=%d) by SIGSEGV.", *pid);
    if (!goneWithin(*pid, kLastGraceMicros))
        return;
    TARN_LOG_AS(kProcSource, kKillWait, level, "process(pid=%d) killed by SIGSEGV!", *pid);
    *pid = 0;
}

void waitUntilGone(int level, pid_t* pid, bool doKill, const timeval& deadline) {
    for (bool gone = reapIfGone(*pid); !gone;) {
        const long long left = microsUntil(deadline);
        if (left <= 0) {
            if (doKill)
                killHard(level, pid);
            return;
        }
        gone = waitAWhile(level, *pid, left);
    }
    // The text is the same for a child that ended by itself, because readers of the log know this text.
    TARN_LOG_AS(kProcSource, kKillWait, level, "process(pid=%d) were killed by SIGTERM!", *pid);
    *pid = 0;
}

void stopChild(int level, pid_t* pid, bool doKill, int timeoutUs) {
    if (reapIfGone(*pid)) {
        TARN_LOG_AS(kProcSource, kKillWait, level, "process(pid=%d) already exited!", *pid);
        *pid = 0;
        return;
    }
    const timeval deadline = deadlineAfter(timeoutUs);
    if (doKill) {
        ::kill(*pid, SIGTERM);
        TARN_LOG_AS(kProcSource, kKillWait, level, "kill process(pid=%d) by SIGTERM.", *pid);
    }
    waitUntilGone(level, pid, doKill, deadline);
}

} // namespace

int tr_proc_killwait(int level, pid_t* pid, int doKill, int timeoutUs) {
    if (pid == nullptr || *pid < 1)
        return 0;
    stopChild(level, pid, doKill != 0, timeoutUs);
    TARN_LOG_AS(kProcSource, __func__, level, "done!");
    return *pid > 0 ? -1 : 0;
}
