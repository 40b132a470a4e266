#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "support/trcfg_utils_fileio.h"

ssize_t readUpTo(int fd, void* buffer, std::size_t size) {
    std::size_t total = 0;
    while (total < size) {
        const ssize_t count = ::read(fd, static_cast<char*>(buffer) + total, size - total);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && total == 0)
            return -1;
        if (count <= 0)
            break;
        total += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(total);
}

bool writeAll(int fd, const void* data, std::size_t size) {
    const char* rest = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t count = ::write(fd, rest, size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        rest += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

UniqueFd openRegular(const char* path, int flags, mode_t mode) {
    UniqueFd file(::open(path, flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, mode));
    struct stat status = {};
    if (file && (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)))
        file.reset();
    return file;
}

bool flushAndClose(UniqueFd& file) {
    return ::fsync(file.get()) == 0 && file.reset() == 0;
}
