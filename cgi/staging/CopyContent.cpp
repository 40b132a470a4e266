#include "cgi/staging/CopyContent.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <cerrno>

#include "common/UniqueFd.h"

namespace {

bool copyContent(const UniqueFd& from, const UniqueFd& to) {
    constexpr std::size_t kLargestCall = 1 << 30;
    ssize_t count = 0;
    do {
        count = ::sendfile(to.get(), from.get(), nullptr, kLargestCall);
    } while (count > 0 || (count < 0 && errno == EINTR));
    return count == 0;
}

} // namespace

bool copyToNewFile(const std::string& from, const std::string& to, mode_t mode) {
    const UniqueFd source(::open(from.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!source)
        return false;
    UniqueFd copy(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!copy)
        return false;
    if (copyContent(source, copy) && copy.reset() == 0)
        return true;
    const int error = errno;
    ::unlink(to.c_str());
    errno = error;
    return false;
}
