#include "support/trcfg_utils_filesys.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "common/DotEntry.h"
#include "common/UniqueFd.h"
#include "support/trcfg_utils_io.h"
#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_proc.h"
#include "support/trcfg_utils_rmtree.h"

namespace {

// The missing search permission is intentional: the programs of the instrument run as root, and no other user
// should get in.
constexpr mode_t kParentMode = 0644;

constexpr std::size_t kCopyBlock = 4096;

bool isMissing(const char* text) {
    return text == nullptr || *text == '\0';
}

// Also true for a link to a directory.
bool isDirectory(const char* path) {
    struct stat status = {};
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// False for a path that can only be a directory. Such a call must fail before anything is removed.
bool canNameFile(const char* path) {
    if (isMissing(path))
        return false;
    const char* name = baseNameOf(path);
    return *name != '\0' && !isDotEntry(name);
}

// Returns "/" for an entry of the root directory, "." for a path without a slash, and null without memory.
HeapText parentOf(const char* path) {
    std::size_t length = std::strlen(path);
    const auto dropSlashes = [&] {
        while (length > 1 && path[length - 1] == '/')
            --length;
    };
    dropSlashes();
    while (length > 0 && path[length - 1] != '/')
        --length;
    dropSlashes();
    return HeapText(length == 0 ? ::strdup(".") : ::strndup(path, length));
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

// Opens only a regular file, and never blocks on a FIFO.
UniqueFd openRegular(const char* path, int flags, mode_t mode) {
    UniqueFd file(::open(path, flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, mode));
    struct stat status = {};
    if (file && (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)))
        file.reset();
    return file;
}

bool isLink(const char* path) {
    struct stat status = {};
    return ::lstat(path, &status) == 0 && S_ISLNK(status.st_mode);
}

// Whether `src` is `dst` or lies below it.
bool removalTakes(const char* dst, const char* src) {
    if (isLink(dst))
        return false;
    const HeapText place(::realpath(dst, nullptr));
    const HeapText source(::realpath(src, nullptr));
    if (!place || !source)
        return false;
    const std::size_t length = std::strlen(place.get());
    const char after = std::strncmp(place.get(), source.get(), length) == 0 ? source.get()[length] : '?';
    return after == '\0' || after == '/';
}

bool flushAndClose(UniqueFd& file) {
    return ::fsync(file.get()) == 0 && file.reset() == 0;
}

// A file that is written under a temporary name in the same directory, then renamed, so that no reader finds
// a part of it. If it is not renamed, it is removed again.
class NewFile {
public:
    explicit NewFile(const char* place) : m_place(place) {}
    ~NewFile() {
        if (*m_name != '\0')
            ::unlinkat(m_directory.get(), m_name, 0);
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    // Returns no descriptor if the directory is missing or not writable.
    UniqueFd create(mode_t mode) {
        const HeapText parent = parentOf(m_place);
        m_directory = UniqueFd(parent ? ::open(parent.get(), O_PATH | O_DIRECTORY | O_CLOEXEC) : -1);
        UniqueFd file;
        do {
            std::snprintf(m_name, sizeof m_name, ".tr_%u", drawNumber());
            file =
                UniqueFd(::openat(m_directory.get(), m_name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        } while (!file && errno == EEXIST);
        if (!file)
            *m_name = '\0';
        return file;
    }

    // A directory tree at the final path is removed first; rename replaces anything else in one step.
    bool putIntoPlace() {
        struct stat status = {};
        const char* name = baseNameOf(m_place);
        const bool inTheWay =
            ::fstatat(m_directory.get(), name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
        if (inTheWay && !removeTree(m_place, true, nullptr))
            return false;
        if (::renameat(m_directory.get(), m_name, m_directory.get(), name) != 0)
            return false;
        *m_name = '\0';
        return true;
    }

private:
    const char* const m_place;
    UniqueFd m_directory;
    char m_name[16] = "";
};

int copyBlocks(int from, UniqueFd& to) {
    char block[kCopyBlock];
    ssize_t count = 0;
    while ((count = readUpTo(from, block, sizeof block)) > 0) {
        if (!writeAll(to.get(), block, static_cast<std::size_t>(count)))
            return 21;
    }
    if (count < 0)
        return 14;
    return flushAndClose(to) ? 0 : 22;
}

int installFile(const char* src, const char* dst, mode_t mode) {
    if (isMissing(src) || !canNameFile(dst))
        return 1;
    const UniqueFd from = openRegular(src, O_RDONLY, 0);
    if (!from)
        return 12;
    if (removalTakes(dst, src))
        return 3;
    if (tr_mkdir_parent(dst, kParentMode) != 0)
        return 11;
    NewFile copy(dst);
    UniqueFd to = copy.create(mode);
    if (!to)
        return 13;
    if (const int step = copyBlocks(from.get(), to); step != 0)
        return step;
    return copy.putIntoPlace() ? 0 : 2;
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

int tr_install_file(const char* src, const char* dst, mode_t mode) {
    const int step = installFile(src, dst, mode);
    if (step == 0)
        TARN_LOG_AS(kFilesysSource, __func__, kLogSuccess, "file \"%s\" --> \"%s\" installed", src, dst);
    else
        TARN_LOG_AS(kFilesysSource, __func__, kLogFailure, "file \"%s\" --> \"%s\" install failed!(ret=%d)",
                    printable(src), printable(dst), step);
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
