#include "support/trcfg_utils_tmpnam.h"

#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>

#include "support/trcfg_utils_proc.h"

namespace {

bool nothingAt(const char* path) {
    struct stat status = {};
    return ::lstat(path, &status) != 0;
}

} // namespace

unsigned drawNumber() {
    unsigned number = 0;
    if (::getrandom(&number, sizeof number, GRND_NONBLOCK) == static_cast<ssize_t>(sizeof number))
        return number;
    // Early at boot the random pool may not be ready yet.
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<unsigned>(now.tv_nsec) * 2654435761U ^ static_cast<unsigned>(::getpid());
}

char* tr_get_tmpnam(char* buf) {
    if (buf == nullptr)
        return nullptr;
    do {
        std::snprintf(buf, TR_TMPNAM_SIZE, "/tmp/.tr_%u", drawNumber());
    } while (!nothingAt(buf));
    return buf;
}
