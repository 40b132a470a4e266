#include <fcntl.h>
#include <unistd.h>

#include <cctype>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "support/trcfg_utils_fileio.h"
#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_proc.h"

namespace {

bool isKept(int fd, int keepCount, va_list kept) {
    va_list walk;
    va_copy(walk, kept);
    bool found = false;
    for (int index = 0; index < keepCount && !found; ++index) {
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
