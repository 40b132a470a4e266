#include "support/trcfg_utils_filesys.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstring>

#include "common/UniqueFd.h"
#include "support/trcfg_utils_fileio.h"
#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_paths.h"
#include "support/trcfg_utils_proc.h"
#include "support/trcfg_utils_rmtree.h"

namespace {

// Also true for a link to a directory.
bool isDirectory(const char* path) {
    struct stat status = {};
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// Returns the number of the failed step, or 0. `made` is set if the directory was made by this call.
int makeDirectory(const char* path, mode_t mode, bool* made) {
    if (isDirectory(path))
        return 0;
    if (::strnlen(path, PATH_MAX) == PATH_MAX)
        return 21;               // mkdir would fail too; the limit also bounds the recursion
    removeUnlessDirectory(path); // if this fails, mkdir fails too
    if (tr_mkdir_parent(path, mode) != 0)
        return 11;
    *made = ::mkdir(path, mode) == 0;
    // Another process may have made it first, or the path ends in "a/.." and a was just made.
    return *made || isDirectory(path) ? 0 : 21;
}

int clearPlace(const char* path) {
    if (!removeTree(path, true, nullptr))
        return 2;
    return tr_mkdir_parent(path, kParentMode) == 0 ? 0 : 11;
}

int makeFifo(const char* path, mode_t mode) {
    if (!canNameFile(path))
        return 1;
    if (const int step = clearPlace(path); step != 0)
        return step;
    return ::mkfifo(path, mode) == 0 ? 0 : 21;
}

int makeLink(const char* target, const char* link) {
    if (isMissing(target) || !canNameFile(link))
        return 1;
    if (const int step = clearPlace(link); step != 0)
        return step;
    return ::symlink(target, link) == 0 ? 0 : 21;
}

int markFile(const char* path, const char* text, mode_t mode) {
    if (isMissing(path))
        return 1;
    UniqueFd file = openRegular(path, O_WRONLY | O_CREAT | O_TRUNC, mode);
    if (!file)
        return 11;
    if (text != nullptr && !writeAll(file.get(), text, std::strlen(text)))
        return 21;
    return flushAndClose(file) ? 0 : 22;
}

} // namespace

int tr_mkdir_parent(const char* path, mode_t mode) {
    const HeapText parent = isMissing(path) ? nullptr : parentOf(path);
    bool made = false;
    const int step = parent ? makeDirectory(parent.get(), mode, &made) : 1;
    if (step != 0)
        TARN_LOG_AS(kFilesysSource, __func__, kLogFailure,
                    "build parent directory of path(%s) failed!(ret=%d)", printable(path), step);
    if (made)
        TARN_LOG_AS(kFilesysSource, __func__, kLogSuccess, "directory %s have been made", parent.get());
    return step == 0 ? 0 : -1;
}

int tr_mkdir(const char* path, mode_t mode) {
    bool made = false;
    const int step = isMissing(path) ? 1 : makeDirectory(path, mode, &made);
    if (step != 0)
        TARN_LOG_AS(kFilesysSource, __func__, kLogFailure, "build directory(%s) failed!(ret=%d)",
                    printable(path), step);
    if (made)
        TARN_LOG_AS(kFilesysSource, __func__, kLogSuccess, "directory %s have been made", path);
    return step == 0 ? 0 : -1;
}

int tr_rmdir(const char* path, int force) {
    bool removed = false;
    if (!removeTree(path, force != 0, &removed))
        return -1;
    if (removed)
        TARN_LOG_AS(kFilesysSource, __func__, kLogSuccess, "storage path(full_name=%s) have been removed",
                    path);
    return 0;
}

int tr_mkfifo(const char* path, mode_t mode) {
    const int step = makeFifo(path, mode);
    if (step == 0)
        TARN_LOG_AS(kFilesysSource, __func__, kLogSuccess, "fifo device %s have been made", path);
    else
        TARN_LOG_AS(kFilesysSource, __func__, kLogFailure, "build fifo device(%s) failed!(ret=%d)",
                    printable(path), step);
    return step == 0 ? 0 : -1;
}

int tr_mksymlink(const char* target, const char* link) {
    const int step = makeLink(target, link);
    if (step == 0)
        TARN_LOG_AS(kFilesysSource, __func__, kLogSuccess, "symbol link \"%s\" --> \"%s\" have been made",
                    link, target);
    else
        TARN_LOG_AS(kFilesysSource, __func__, kLogFailure, "build symbol link (%s) failed!(ret=%d)",
                    printable(link), step);
    return step == 0 ? 0 : -1;
}

int tr_newmark_file(const char* path, const char* text, mode_t mode) {
    const int step = markFile(path, text, mode);
    if (step == 0)
        TARN_LOG_AS(kFilesysSource, __func__, kLogSuccess, "mark file \"%s\" have been made", path);
    else
        TARN_LOG_AS(kFilesysSource, __func__, kLogFailure, "build mark file(%s) failed!(ret=%d)",
                    printable(path), step);
    return step == 0 ? 0 : -1;
}
