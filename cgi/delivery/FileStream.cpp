#include "cgi/delivery/FileStream.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include "cgi/answer/Output.h"
#include "cgi/staging/OwnPlace.h"
#include "common/Report.h"
#include "common/WriteAll.h"

namespace {

constexpr std::size_t kChunk = 30720;
// The most bytes for one sendfile call. It fits a size_t of 32 bits.
constexpr long long kLargestCall = 1 << 30;

// These two return the number of bytes sent, 0 at the end of the file, or -1 with errno set.
ssize_t sendDirectly(int file, long long rest) {
    return ::sendfile(STDOUT_FILENO, file, nullptr, static_cast<std::size_t>(std::min(rest, kLargestCall)));
}

ssize_t sendCopied(int file, long long rest) {
    std::array<char, kChunk> chunk;
    const auto wanted = std::min(rest, static_cast<long long>(chunk.size()));
    const ssize_t count = ::read(file, chunk.data(), static_cast<std::size_t>(wanted));
    if (count > 0 && !writeAll(STDOUT_FILENO, {chunk.data(), static_cast<std::size_t>(count)}))
        return -1;
    return count;
}

// sendfile does not work for every output (for example, a file opened for appending) or every file system.
bool isUnsupported(int errorNumber) {
    return errorNumber == EINVAL || errorNumber == ENOSYS;
}

} // namespace

FileStream::FileStream(const std::string& path, From from) : m_path(path) {
    // O_NONBLOCK, because the open of a FIFO without a writer would block for ever.
    const int follow = from == From::Staging ? O_NOFOLLOW : 0;
    m_file = UniqueFd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | follow));
    const int openError = errno;
    struct stat status = {};
    if (m_file)
        ::fstat(m_file.get(), &status);
    else if (from == From::Storage)
        ::stat(path.c_str(), &status);
    m_size = status.st_size;
    if (!m_file) {
        m_isMissing = openError == ENOENT || openError == ENOTDIR || openError == ELOOP;
        reportErrno("send", path, openError);
    } else if (!S_ISREG(status.st_mode)) {
        m_isMissing = true;
        report("send", path, "not a regular file");
        m_file.reset();
    } else if (from == From::Staging && !isOwnFile(status)) {
        report("send", path, "not this program's own file");
        m_file.reset();
    }
    if (!m_file && from == From::Staging)
        m_size = 0;
}

void FileStream::send() {
    std::fflush(stdout);
    if (!m_file || output::isStopped())
        return;
    ::posix_fadvise(m_file.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    auto* sendSome = &sendDirectly;
    for (long long rest = m_size; rest > 0;) {
        const ssize_t count = sendSome(m_file.get(), rest);
        if (count == 0) {
            report("send", m_path, "it became shorter meanwhile");
            return;
        }
        if (count > 0) {
            rest -= count;
        } else if (sendSome == &sendDirectly && isUnsupported(errno)) {
            sendSome = &sendCopied;
        } else if (!mayWriteAgain(STDOUT_FILENO, errno)) {
            reportErrno("send", m_path, errno);
            output::stop();
            return;
        }
    }
}

IgnoreBrokenPipe::IgnoreBrokenPipe() : m_previous(std::signal(SIGPIPE, SIG_IGN)) {}

IgnoreBrokenPipe::~IgnoreBrokenPipe() {
    std::signal(SIGPIPE, m_previous);
}
