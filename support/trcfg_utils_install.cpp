#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "common/UniqueFd.h"
#include "support/trcfg_utils_fileio.h"
#include "support/trcfg_utils_filesys.h"
#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_paths.h"
#include "support/trcfg_utils_proc.h"
#include "support/trcfg_utils_rmtree.h"
#include "support/trcfg_utils_tmpnam.h"

namespace {

constexpr std::size_t kCopyBlock = 4096;

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

} // namespace

int tr_install_file(const char* src, const char* dst, mode_t mode) {
    const int step = installFile(src, dst, mode);
    if (step == 0)
        TARN_LOG_AS(kFilesysSource, __func__, kLogSuccess, "file \"%s\" --> \"%s\" installed", src, dst);
    else
        TARN_LOG_AS(kFilesysSource, __func__, kLogFailure, "file \"%s\" --> \"%s\" install failed!(ret=%d)",
                    printable(src), printable(dst), step);
    return step == 0 ? 0 : -1;
}
