#include "common/WriteAll.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

bool mayWriteAgain(int fd, int errorNumber) {
    if (errorNumber == EINTR)
        return true;
    if (errorNumber != EAGAIN)
        return false;
    pollfd output = {fd, POLLOUT, 0};
    return ::poll(&output, 1, -1) >= 0 || errno == EINTR;
}

bool writeAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(fd, text.data(), text.size());
        if (count > 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (count == 0) {
            errno = EIO; // without this, a device that accepts no byte would cause an endless loop
            return false;
        } else if (!mayWriteAgain(fd, errno)) {
            return false;
        }
    }
    return true;
}
