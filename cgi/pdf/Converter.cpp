#include "cgi/pdf/Converter.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>

#include "cgi/confine/Limits.h"
#include "cgi/confine/Reach.h"
#include "cgi/delivery/Termination.h"
#include "common/FixedPaths.h"
#include "common/Report.h"
#include "common/Retry.h"

namespace {

// Runs in the child, which becomes the leader of a new process group. The lock is closed on exec: a process
// that the converter leaves running must not make other requests wait.
[[noreturn]] void becomeConverter(pid_t parent) {
    std::string program = "htm2pdf";
    std::string taskList = paths::kPdfTaskList;
    std::array<char*, 3> arguments = {program.data(), taskList.data(), nullptr};
    ::setpgid(0, 0);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() == parent) {
        limits::liftForConverter();
        reach::confineConverter();
        ::execvp(paths::kPdfConverter, arguments.data());
        reportErrno("start", paths::kPdfConverter, errno);
    }
    ::_exit(0);
}

int waitFor(pid_t child) {
    int status = 0;
    return retryInterrupted([&] { return ::waitpid(child, &status, 0); }) < 0 ? -1 : status;
}

// Kills the group and waits for its end. Orphans of the group are children of this process, because it is
// their subreaper.
void endGroup(pid_t leader) {
    ::kill(-leader, SIGKILL);
    while (::waitpid(-leader, nullptr, 0) > 0 || errno == EINTR) {
    }
}

bool isSuccess(int status) {
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return true;
    const std::string why = WIFEXITED(status) ? "failed with status " + std::to_string(WEXITSTATUS(status))
                                              : "ended by signal " + std::to_string(WTERMSIG(status));
    report("convert with", paths::kPdfConverter, why);
    return false;
}

} // namespace

bool converter::run() {
    std::fflush(stdout);
    // A server may ignore SIGCHLD, and this process inherits that. The exit status would be lost then.
    std::signal(SIGCHLD, SIG_DFL);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0)
        becomeConverter(parent);
    if (child < 0) {
        reportErrno("start", paths::kPdfConverter, errno);
        return false;
    }
    // The child does the same. Both calls are needed: a signal may come before the child has run.
    ::setpgid(child, child);
    TerminationDeferral::passOnTo(child);
    const int status = waitFor(child);
    TerminationDeferral::passOnTo(0);
    endGroup(child);
    return isSuccess(status);
}
