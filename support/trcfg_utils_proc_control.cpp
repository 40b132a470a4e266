#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <initializer_list>

#include "support/trcfg_utils_io.h"
#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_proc.h"

// ---- Stopping a child ----

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

// ---- Starting a program in a child ----

namespace {

struct ArgumentsDeleter {
    void operator()(char** arguments) const { std::free(static_cast<void*>(arguments)); }
};
using Arguments = std::unique_ptr<char*, ArgumentsDeleter>;

// "<base name of app> <args>"
HeapText joinCommandLine(const char* app, const char* args) {
    const char* name = baseNameOf(app);
    const std::size_t size = std::strlen(name) + std::strlen(args) + 2;
    HeapText line(static_cast<char*>(std::malloc(size)));
    if (line)
        std::snprintf(line.get(), size, "%s %s", name, args);
    return line;
}

// Splits `line` in place at blanks, even inside the base name of the program. This is intentional: the
// programs have always been called like this.
Arguments splitAtBlanks(char* line) {
    const std::size_t mostPieces = std::strlen(line) / 2 + 1;
    Arguments arguments(static_cast<char**>(std::calloc(mostPieces + 1, sizeof(char*))));
    if (!arguments)
        return arguments;
    char* state = nullptr;
    char** next = arguments.get();
    for (char* piece = ::strtok_r(line, " ", &state); piece != nullptr;
         piece = ::strtok_r(nullptr, " ", &state))
        *next++ = piece;
    return arguments;
}

} // namespace

int tr_proc_invoke(int level, const char* app, const char* args) {
    if (app == nullptr || *app == '\0') {
        TARN_LOG_AS(kProcSource, __func__, level, "running app not specified!");
        return 0;
    }
    if (::access(app, X_OK) != 0) {
        TARN_LOG_AS(kProcSource, __func__, level, "running app(%s) doesn't exist!", app);
        return 0;
    }
    if (args == nullptr)
        args = "";
    TARN_LOG_AS(kProcSource, __func__, level, "run app(%s) in proc=%d with args(%s) ...", app, ::getpid(),
                args);
    const HeapText line = joinCommandLine(app, args);
    const Arguments arguments = line ? splitAtBlanks(line.get()) : nullptr;
    if (arguments)
        ::execv(app, arguments.get());
    TARN_LOG_AS(kProcSource, __func__, level, "run app(%s) failed!(errno=%d)", app, errno);
    return 0;
}

// ---- Cleaning the descriptors of a child ----

namespace {

bool isKept(int fd, int keepCount, va_list kept) {
    va_list walk;
    va_copy(walk, kept);
    bool found = false;
    for (int index = 0; index < keepCount && !found; ++index) {
        // NOLINTNEXTLINE(*-valist.Uninitialized): clang-tidy 14 sees va_copy in the first such source only
        found = va_arg(walk, int) == fd;
    }
    va_end(walk);
    return found;
}

// Starts above standard error, so that messages of the child still reach its reader.
void closeUnlessKept(int fd, int keepCount, va_list kept) {
    if (fd > STDERR_FILENO && !isKept(fd, keepCount, kept))
        ::close(fd);
}

// Reads the open descriptors from /proc, because the descriptor limit may be in the millions.
bool closeListed(int keepCount, va_list kept) {
    const DirStream listing(::opendir("/proc/self/fd"));
    if (!listing)
        return false;
    while (const dirent* entry = ::readdir(listing.get())) {
        if (std::isdigit(static_cast<unsigned char>(entry->d_name[0])) == 0)
            continue;
        const int fd = static_cast<int>(std::strtol(entry->d_name, nullptr, 10));
        if (fd != ::dirfd(listing.get()))
            closeUnlessKept(fd, keepCount, kept);
    }
    return true;
}

// For a system without /proc, or when the descriptor table is so full that /proc cannot be listed.
void closeUpToLimit(int keepCount, va_list kept) {
    const long limit = ::sysconf(_SC_OPEN_MAX);
    for (int fd = 0; fd < limit; ++fd)
        closeUnlessKept(fd, keepCount, kept);
}

// Returns the number of the failed step, or 0.
int cleanDescriptors(int keepCount, va_list kept) {
    // Not close-on-exec: if standard input or output was closed, this descriptor takes its number.
    const int null = ::open("/dev/null", O_RDWR);
    if (null < 0)
        return 11;
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO}) {
        if (!isKept(standard, keepCount, kept) && ::dup2(null, standard) < 0)
            return 12;
    }
    if (!closeListed(keepCount, kept))
        closeUpToLimit(keepCount, kept);
    return 0;
}

} // namespace

int tr_proc_clean(int level, int keepCount, ...) {
    releaseSyslogDescriptor();
    va_list kept;
    va_start(kept, keepCount);
    const int step = cleanDescriptors(keepCount, kept);
    va_end(kept);
    if (step == 0)
        return 0;
    TARN_LOG_AS(kProcSource, __func__, level, "clean descriptors of proc=%d failed!(ret=%d)", ::getpid(),
                step);
    return -1;
}
