#include <fcntl.h>
#include <sys/select.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <memory>

#include "support/trcfg_utils_fileio.h"
#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_proc.h"

namespace {

using DescriptorSet = std::unique_ptr<unsigned long, FreeDeleter>;

// A descriptor set that contains only `fd`. fd_set is limited to FD_SETSIZE, but select() is not.
DescriptorSet makeSet(int fd) {
    constexpr std::size_t bitsPerWord = CHAR_BIT * sizeof(unsigned long);
    const auto bit = static_cast<std::size_t>(fd);
    DescriptorSet set(static_cast<unsigned long*>(std::calloc(bit / bitsPerWord + 1, sizeof(unsigned long))));
    if (set)
        set.get()[bit / bitsPerWord] |= 1UL << (bit % bitsPerWord);
    return set;
}

// Returns 1 if readable, 0 after the time-out, -1 with errno set on failure.
int selectReadable(int fd, timeval rest) {
    while (true) {
        const DescriptorSet set = makeSet(fd);
        if (!set)
            return -1;
        const int ready = ::select(fd + 1, reinterpret_cast<fd_set*>(set.get()), nullptr, nullptr, &rest);
        if (ready >= 0 || errno != EINTR)
            return ready;
        // Linux stores the remaining time in `rest`; the next wait uses it.
    }
}

} // namespace

time_t tr_get_clock(struct timeval* out) {
    timespec now = {};
    if (::clock_gettime(CLOCK_MONOTONIC, &now) != 0)
        return -1;
    if (out != nullptr) {
        out->tv_sec = now.tv_sec;
        out->tv_usec = static_cast<suseconds_t>(now.tv_nsec / 1000);
    }
    return now.tv_sec;
}

int tr_read_wait(int fd, const struct timeval* timeout) {
    // This test comes first because select() ignores numbers above the descriptor table.
    const bool isOpen = fd >= 0 && ::fcntl(fd, F_GETFD) >= 0;
    // A null time-out means one poll, not an endless wait. This is intentional: the loops of the callers have
    // other work to do.
    const int ready = isOpen ? selectReadable(fd, timeout == nullptr ? timeval{} : *timeout) : -1;
    if (ready < 0)
        TARN_LOG_AS(kProcSource, __func__, kLogFailure, "wait for descriptor(%d) failed!(ret=%d)", fd,
                    isOpen ? 11 : 1);
    return ready;
}
