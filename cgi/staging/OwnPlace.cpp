#include "cgi/staging/OwnPlace.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "cgi/staging/RemoveTree.h"
#include "common/Report.h"

namespace {

constexpr mode_t kDirectoryMode = 0700;
// Another user may put a new file at the path again and again, and wins some rounds, but not all of them.
constexpr int kRounds = 100;

// Moves a directory of another user to a new name. Its contents are not deleted, because its owner could lead
// the deletion to other files by a link.
bool moveAside(const std::string& path) {
    std::string aside = path + ".foreign.XXXXXX";
    if (::mkdtemp(aside.data()) == nullptr)
        return false;
    if (std::rename(path.c_str(), aside.c_str()) == 0) {
        report("use", path, "a directory of another user, moved to " + aside);
        return true;
    }
    const int error = errno;
    ::rmdir(aside.c_str());
    errno = error;
    return false;
}

// Removes or moves aside the entry at path. Another user may take the name again at once. Returns false with
// errno set.
bool clearPlace(const std::string& path) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0)
        return errno == ENOENT;
    if (!S_ISDIR(status.st_mode))
        return ::unlink(path.c_str()) == 0 || errno == ENOENT;
    return isOwn(status) ? removeTree(path) : moveAside(path) || errno == ENOENT;
}

// Whether path is a directory in which this user can write and nobody else can.
bool isOwnDirectory(const std::string& path) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || !isOwn(status))
        return false;
    if (status.st_uid == ::geteuid())
        return (status.st_mode & 07777) == kDirectoryMode || ::chmod(path.c_str(), kDirectoryMode) == 0;
    // Root made it for this program. A group that may write was chosen by root.
    return (status.st_mode & S_IWOTH) == 0 && ::access(path.c_str(), R_OK | W_OK | X_OK) == 0;
}

} // namespace

bool isDirectory(const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool isOwn(const struct stat& status) {
    return status.st_uid == ::geteuid() || status.st_uid == 0;
}

bool isOwnFile(const struct stat& status) {
    return S_ISREG(status.st_mode) && isOwn(status) && status.st_nlink == 1;
}

bool bearsName(const UniqueFd& file, const std::string& path) {
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(file.get(), &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

bool claimDirectory(const std::string& path) {
    for (int round = 0; round < kRounds; ++round) {
        if (::mkdir(path.c_str(), kDirectoryMode) == 0)
            return true;
        if (errno != EEXIST)
            break;
        if (isOwnDirectory(path))
            return true;
        struct stat status = {};
        const bool isRoots = ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && isOwn(status);
        errno = EACCES;
        if (isRoots || !clearPlace(path))
            break;
    }
    reportErrno("use directory", path, errno);
    return false;
}

UniqueFd createOwnFile(const std::string& path, mode_t mode) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    UniqueFd file;
    for (int round = 0; round < kRounds && !file; ++round) {
        if (!clearPlace(path))
            break;
        file = UniqueFd(::open(path.c_str(), kFlags, mode));
        if (!file && errno != EEXIST)
            break;
    }
    if (!file)
        reportErrno("create", path, errno);
    return file;
}

bool moveOver(const std::string& from, const std::string& to) {
    for (int round = 0; round < kRounds; ++round) {
        if (std::rename(from.c_str(), to.c_str()) == 0)
            return true;
        // rename itself replaces everything except a directory.
        if (!isDirectory(to) || !clearPlace(to))
            break;
    }
    reportErrno("replace", to, errno);
    return false;
}
