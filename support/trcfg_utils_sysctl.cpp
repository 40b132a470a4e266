#include <fcntl.h>

#include "common/UniqueFd.h"
#include "support/trcfg_utils_fileio.h"
#include "support/trcfg_utils_filesys.h"
#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_paths.h"
#include "support/trcfg_utils_proc.h"

namespace {

int readParameter(const char* path, void* buffer, std::size_t* size) {
    const UniqueFd file(::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file)
        return 11;
    const ssize_t count = readUpTo(file.get(), buffer, *size);
    *size = count > 0 ? static_cast<std::size_t>(count) : 0;
    return count > 0 ? 0 : 12;
}

int writeParameter(const char* path, const void* data, std::size_t size) {
    const UniqueFd file(::open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file)
        return 21;
    return writeAll(file.get(), data, size) ? 0 : 22;
}

int accessParameter(const char* path, void* readBuf, std::size_t* readLen, const void* writeBuf,
                    std::size_t writeLen) {
    if (isMissing(path))
        return 1;
    if (readBuf != nullptr && readLen != nullptr && *readLen != 0) {
        if (const int step = readParameter(path, readBuf, readLen); step != 0)
            return step;
    }
    if (writeBuf == nullptr || writeLen == 0)
        return 0;
    return writeParameter(path, writeBuf, writeLen);
}

} // namespace

int tr_sysctl_readwrite(const char* path, void* readBuf, size_t* readLen, const void* writeBuf,
                        size_t writeLen) {
    const int step = accessParameter(path, readBuf, readLen, writeBuf, writeLen);
    if (step == 0)
        TARN_LOG_AS(kFilesysSource, __func__, kLogSuccess, "kernel parameter %s have been accessed", path);
    else
        TARN_LOG_AS(kFilesysSource, __func__, kLogFailure, "access kernel parameter(%s) failed!(ret=%d)",
                    printable(path), step);
    return step == 0 ? 0 : -1;
}
