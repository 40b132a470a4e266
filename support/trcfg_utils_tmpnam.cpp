#include <sys/stat.h>

#include <cstdio>

#include "support/trcfg_utils_io.h"
#include "support/trcfg_utils_proc.h"

namespace {

bool nothingAt(const char* path) {
    struct stat status = {};
    return ::lstat(path, &status) != 0;
}

} // namespace

char* tr_get_tmpnam(char* buf) {
    if (buf == nullptr)
        return nullptr;
    do {
        std::snprintf(buf, TR_TMPNAM_SIZE, "/tmp/.tr_%u", drawNumber());
    } while (!nothingAt(buf));
    return buf;
}
