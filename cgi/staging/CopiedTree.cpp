#include "cgi/staging/CopiedTree.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

#include "cgi/staging/CopiedLinks.h"
#include "cgi/staging/CopyContent.h"
#include "cgi/staging/OwnPlace.h"
#include "common/Report.h"

namespace {

bool isLater(const timespec& time, const timespec& than) {
    return time.tv_sec != than.tv_sec ? time.tv_sec > than.tv_sec : time.tv_nsec > than.tv_nsec;
}

bool copyLink(const std::string& source, const std::string& copy) {
    std::array<char, PATH_MAX> target{};
    return ::readlink(source.c_str(), target.data(), target.size() - 1) > 0 &&
           ::symlink(target.data(), copy.c_str()) == 0;
}

} // namespace

// Reads the clock from which the kernel takes the times of files.
timespec CopiedTree::now() {
    timespec time = {};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &time);
    return time;
}

bool CopiedTree::hasChanged(const struct stat& source) const {
    // A time in the future proves nothing: the clock was set back.
    return isLater(source.st_ctim, m_begun) && !isLater(source.st_ctim, now());
}

bool CopiedTree::isWhole(const std::string& source, const std::string& copy, EntryType type) const {
    struct stat status = {};
    if (type == EntryType::Directory)
        return isWholeDirectory(source, copy);
    if (::lstat(source.c_str(), &status) != 0)
        return errno == ENOENT;
    if (S_ISREG(status.st_mode))
        return isWholeFile(status, copy);
    if (S_ISDIR(status.st_mode))
        return isWholeDirectory(source, copy);
    // Of all other kinds, only links to stored files are packed.
    struct stat copied = {};
    return !S_ISLNK(status.st_mode) || !isLinkToStoredFile(source) || ::lstat(copy.c_str(), &copied) == 0 ||
           hasChanged(status);
}

bool CopiedTree::isWholeFile(const struct stat& source, const std::string& copy) const {
    struct stat status = {};
    const bool isEqual =
        ::lstat(copy.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size == source.st_size;
    return isEqual || hasChanged(source);
}

bool CopiedTree::isWholeDirectory(const std::string& source, const std::string& copy) const {
    const auto listing = readWholeDirectory(source);
    if (!listing)
        return false;
    // An empty directory must be copied too.
    if (!isDirectory(copy)) {
        struct stat status = {};
        return ::lstat(source.c_str(), &status) == 0 && hasChanged(status);
    }
    for (const DirEntry entry : *listing) {
        if (!isWhole(entryPath(source, entry.name), entryPath(copy, entry.name), entry.type))
            return false;
    }
    return true;
}

bool CopiedTree::make(const std::string& source, const std::string& copy, EntryType type) const {
    struct stat status = {};
    if (::lstat(source.c_str(), &status) != 0)
        return errno == ENOENT;
    if (type == EntryType::Directory || S_ISDIR(status.st_mode))
        return makeDirectory(source, copy, status.st_mode);
    ::unlink(copy.c_str());
    if (S_ISREG(status.st_mode) ? copyToNewFile(source, copy, status.st_mode & 0777)
                                : !S_ISLNK(status.st_mode) || copyLink(source, copy))
        return true;
    reportErrno("copy", source, errno);
    return false;
}

bool CopiedTree::makeDirectory(const std::string& source, const std::string& copy, mode_t mode) const {
    const auto listing = readWholeDirectory(source);
    if (!listing || (::mkdir(copy.c_str(), (mode & 0777) | S_IRWXU) != 0 && !isDirectory(copy))) {
        reportErrno("copy", source, errno);
        return false;
    }
    for (const DirEntry entry : *listing) {
        if (!make(entryPath(source, entry.name), entryPath(copy, entry.name), entry.type))
            return false;
    }
    return true;
}
