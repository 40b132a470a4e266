#include "cgi/staging/Shell.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "common/Report.h"
#include "common/Retry.h"
#include "common/UniqueFd.h"

namespace {

// Redirects standard output to standard error during its lifetime.
class OutputToErrorLog {
public:
    OutputToErrorLog() : m_saved(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
        std::fflush(stdout);
        if (::dup2(STDERR_FILENO, STDOUT_FILENO) >= 0)
            return;
        const UniqueFd null(::open("/dev/null", O_WRONLY | O_CLOEXEC));
        ::dup2(null.get(), STDOUT_FILENO);
    }
    OutputToErrorLog(const OutputToErrorLog&) = delete;
    OutputToErrorLog& operator=(const OutputToErrorLog&) = delete;
    ~OutputToErrorLog() {
        if (m_saved)
            ::dup2(m_saved.get(), STDOUT_FILENO);
        else
            ::close(STDOUT_FILENO);
    }

private:
    // Closed on exec: a background command that inherited it would keep the response open.
    UniqueFd m_saved;
};

// Lets children inherit a descriptor during its lifetime.
class Inheritable {
public:
    explicit Inheritable(int fd) : m_fd(fd) { setFlags(0); }
    Inheritable(const Inheritable&) = delete;
    Inheritable& operator=(const Inheritable&) = delete;
    ~Inheritable() { setFlags(FD_CLOEXEC); }

private:
    void setFlags(int flags) const {
        if (m_fd >= 0)
            ::fcntl(m_fd, F_SETFD, flags);
    }
    int m_fd;
};

constexpr int kSignalBase = 128;
// What the shell itself says of a command that it does not find.
constexpr int kNotFound = 127;

// In a process of its own, which keeps the confinement of this command away from the request.
[[noreturn]] void becomeCommand(const std::string& command, const reach::CommandPlaces& places) {
    reach::confineCommand(places);
    const int status = std::system(command.c_str()); // NOLINT(cert-env33-c): the interface is a shell command
    if (status == -1) {
        reportErrno("run", command, errno);
        ::_exit(kNotFound);
    }
    ::_exit(WIFEXITED(status) ? WEXITSTATUS(status) : kSignalBase + WTERMSIG(status));
}

} // namespace

int shell::run(const std::string& command, int inheritedFd, const reach::CommandPlaces& places) {
    const OutputToErrorLog redirection;
    const Inheritable inheritance(inheritedFd);
    // A server may ignore SIGCHLD, and this process inherits that. The exit status would be lost then.
    std::signal(SIGCHLD, SIG_DFL);
    const pid_t child = ::fork();
    if (child == 0)
        becomeCommand(command, places);
    int status = 0;
    if (child < 0 || retryInterrupted([&] { return ::waitpid(child, &status, 0); }) < 0) {
        reportErrno("run", command, errno);
        return kNoShell;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalBase + WTERMSIG(status);
}
