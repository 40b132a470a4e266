// Removal of directory trees. The walk keeps one directory open at a time, goes up through "..", and uses
// only names relative to the open directory. So neither the descriptor limit nor PATH_MAX limits the depth.
// If another process replaces a directory by a symbolic link during the walk, the walk does not follow it.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "common/DotEntry.h"
#include "common/UniqueFd.h"
#include "support/trcfg_utils_fileio.h"
#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_paths.h"
#include "support/trcfg_utils_proc.h"
#include "support/trcfg_utils_rmtree.h"

namespace {

constexpr int kOpenDirectory = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// The numbers of the steps in the log.
constexpr int kNoPath = 1;
constexpr int kRefusedPath = 2;
constexpr int kFileKept = 11;
constexpr int kUnlinkFailed = 12;
constexpr int kLostWay = 13;
constexpr int kNoResources = 14;
constexpr int kRmdirFailed = 101;

// A buffer of bytes that can grow. Without memory it cannot grow; every caller reports that to its own
// caller.
class Bytes {
public:
    // Adds `text` and its NUL after the first `at` bytes.
    bool put(std::size_t at, const char* text) {
        const std::size_t length = std::strlen(text) + 1;
        if (!reserve(at + length))
            return false;
        std::memcpy(m_data.get() + at, text, length);
        m_size = at + length;
        return true;
    }
    [[nodiscard]] const char* from(std::size_t at) const { return m_data.get() + at; }
    void cut(std::size_t at) { m_data.get()[at] = '\0'; }
    [[nodiscard]] std::size_t size() const { return m_size; }

private:
    bool reserve(std::size_t size) {
        if (size <= m_room)
            return true;
        const std::size_t room = std::max(size, 2 * m_room);
        char* grown = static_cast<char*>(std::realloc(m_data.get(), room));
        if (grown == nullptr)
            return false;
        static_cast<void>(m_data.release());
        m_data.reset(grown);
        m_room = room;
        return true;
    }

    HeapText m_data;
    std::size_t m_size = 0;
    std::size_t m_room = 0;
};

// A directory that the walk is in or below.
struct Level {
    Level* above = nullptr;
    std::size_t pathLength = 0; // the length of its path
    dev_t device = 0;
    ino_t inode = 0;
    Bytes subdirectories; // names with a NUL each; those from `nextName` on are still to be removed
    std::size_t nextName = 0;
};

void logKept(const char* path, int step) {
    TARN_LOG_AS(kFilesysSource, "tr_rmdir", kLogFailure, "remove storage path(full_name=%s) failed(ret=%d)",
                path, step);
}

class TreeRemover {
public:
    explicit TreeRemover(bool force) : m_force(force) {}
    ~TreeRemover() {
        while (m_level != nullptr)
            leaveLevel();
    }
    TreeRemover(const TreeRemover&) = delete;
    TreeRemover& operator=(const TreeRemover&) = delete;

    // Removes the directory `path`. Returns true if nothing is left.
    bool run(const char* path) {
        if (!m_path.put(0, path)) {
            logKept(path, kNoResources);
            return false;
        }
        UniqueFd top(::open(path, kOpenDirectory));
        if (top && enter(std::move(top), std::strlen(path)))
            walk();
        if (!m_gaveUp)
            removeEmptied(AT_FDCWD, path);
        return m_complete;
    }

private:
    void fail(int step) {
        logKept(m_path.from(0), step);
        m_complete = false;
    }

    // For failures after which it is unsafe or impossible to continue.
    void giveUp(int step) {
        fail(step);
        m_gaveUp = true;
    }

    void walk() {
        while (m_level != nullptr && !m_gaveUp) {
            if (m_level->nextName < m_level->subdirectories.size())
                descend();
            else
                ascend();
        }
    }

    bool extendPath(const char* name) {
        const std::size_t length = m_level->pathLength;
        return m_path.put(length, "/") && m_path.put(length + 1, name);
    }

    void descend() {
        const char* name = m_level->subdirectories.from(m_level->nextName);
        m_level->nextName += std::strlen(name) + 1;
        if (!extendPath(name))
            return giveUp(kNoResources);
        UniqueFd next(::openat(m_current.get(), name, kOpenDirectory));
        // A directory without search permission can be opened, but its entries and ".." cannot be used.
        if (next && leadsBack(next.get(), *m_level)) {
            enter(std::move(next), m_level->pathLength + 1 + std::strlen(name));
            return;
        }
        removeEmptied(m_current.get(), name);
        m_path.cut(m_level->pathLength);
    }

    static bool leadsBack(int directory, const Level& level) {
        struct stat status = {};
        return ::fstatat(directory, "..", &status, 0) == 0 && status.st_dev == level.device &&
               status.st_ino == level.inode;
    }

    // Goes to the parent directory and removes the directory that was just emptied.
    void ascend() {
        const Level* above = m_level->above;
        if (above == nullptr)
            return leaveLevel();
        UniqueFd up;
        if (leadsBack(m_current.get(), *above))
            up = UniqueFd(::openat(m_current.get(), "..", kOpenDirectory));
        if (!up)
            return giveUp(kLostWay);
        m_current = std::move(up);
        removeEmptied(m_current.get(), m_path.from(above->pathLength + 1));
        leaveLevel();
        m_path.cut(m_level->pathLength);
    }

    // ENOENT, here and below, means that another process has already removed the object.
    void removeEmptied(int directory, const char* name) {
        if (::unlinkat(directory, name, AT_REMOVEDIR) != 0 && errno != ENOENT)
            fail(kRmdirFailed);
    }

    // Makes `directory` the current one and removes its files.
    bool enter(UniqueFd directory, std::size_t pathLength) {
        struct stat status = {};
        void* const memory = std::malloc(sizeof(Level));
        if (memory == nullptr || ::fstat(directory.get(), &status) != 0) {
            std::free(memory);
            giveUp(kNoResources);
            return false;
        }
        m_level = new (memory) Level{m_level, pathLength, status.st_dev, status.st_ino, {}, 0};
        m_current = std::move(directory);
        readEntries();
        m_path.cut(pathLength);
        return !m_gaveUp;
    }

    void leaveLevel() {
        Level* const left = m_level;
        m_level = left->above;
        left->~Level();
        std::free(left);
    }

    void readEntries() {
        UniqueFd copy(::fcntl(m_current.get(), F_DUPFD_CLOEXEC, 0));
        const DirStream stream(copy ? ::fdopendir(copy.get()) : nullptr);
        if (!stream)
            return giveUp(kNoResources);
        static_cast<void>(copy.release());
        while (const dirent* entry = ::readdir(stream.get())) {
            if (!isDotEntry(entry->d_name) && !m_gaveUp)
                treatEntry(*entry);
        }
    }

    void treatEntry(const dirent& entry) {
        if (isDirectory(entry)) {
            Bytes& names = m_level->subdirectories;
            if (!names.put(names.size(), entry.d_name))
                giveUp(kNoResources);
            return;
        }
        if (isGone(entry.d_name))
            return;
        if (!extendPath(entry.d_name))
            return giveUp(kNoResources);
        fail(m_force ? kUnlinkFailed : kFileKept);
    }

    // With `force` a file is removed here. Without `force` it stays unless another process removes it.
    [[nodiscard]] bool isGone(const char* name) const {
        if (m_force)
            return ::unlinkat(m_current.get(), name, 0) == 0 || errno == ENOENT;
        struct stat status = {};
        return ::fstatat(m_current.get(), name, &status, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT;
    }

    [[nodiscard]] bool isDirectory(const dirent& entry) const {
        if (entry.d_type != DT_UNKNOWN)
            return entry.d_type == DT_DIR;
        struct stat status = {};
        return ::fstatat(m_current.get(), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
               S_ISDIR(status.st_mode);
    }

    const bool m_force;
    bool m_complete = true;
    bool m_gaveUp = false;
    Bytes m_path; // the path of the directory or of the current entry
    UniqueFd m_current;
    Level* m_level = nullptr;
};

// Removes the slashes at the end: with them a link would be followed.
HeapText withoutTrailingSlashes(const char* path) {
    std::size_t length = std::strlen(path);
    while (length > 1 && path[length - 1] == '/')
        --length;
    return HeapText(::strndup(path, length));
}

// True for the root directory, and for names like "x/.": there the content could be removed, but not the
// directory.
bool mustStay(const char* path) {
    const char* name = baseNameOf(path);
    return *name == '\0' || isDotEntry(name);
}

// Removes an object that is not a directory. Returns the number of the failed step, or 0.
int removeFile(const char* path, bool force) {
    if (!force)
        return kFileKept;
    return ::unlink(path) == 0 || errno == ENOENT ? 0 : kUnlinkFailed;
}

} // namespace

void removeUnlessDirectory(const char* path) {
    const HeapText name = withoutTrailingSlashes(path);
    struct stat status = {};
    // If another process makes a directory here after this test, unlink() refuses to remove it.
    if (!name || ::lstat(name.get(), &status) != 0 || S_ISDIR(status.st_mode) || ::unlink(name.get()) == 0)
        return;
    if (errno != ENOENT && errno != EISDIR)
        logKept(path, kUnlinkFailed);
}

bool removeTree(const char* path, bool force, bool* removed) {
    const HeapText name = path == nullptr || *path == '\0' ? nullptr : withoutTrailingSlashes(path);
    if (!name) {
        logKept(printable(path), kNoPath);
        return false;
    }
    struct stat status = {};
    if (::lstat(name.get(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR))
        return true;
    if (removed != nullptr)
        *removed = true;
    if (S_ISDIR(status.st_mode) && !mustStay(name.get()))
        return TreeRemover(force).run(name.get());
    const int step = S_ISDIR(status.st_mode) ? kRefusedPath : removeFile(name.get(), force);
    if (step != 0)
        logKept(path, step);
    return step == 0;
}
