#include "cgi/staging/CopiedLinks.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "cgi/staging/CopyContent.h"
#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "common/Report.h"
#include "fileman/disk/Directory.h"

namespace {

bool replaceByCopy(const std::string& link, const std::string& scratch) {
    constexpr mode_t kMode = 0644;
    if (copyToNewFile(link, scratch, kMode) && std::rename(scratch.c_str(), link.c_str()) == 0)
        return true;
    reportErrno("pack", link, errno);
    ::unlink(scratch.c_str());
    return false;
}

bool remove(const std::string& path) {
    if (::unlink(path.c_str()) == 0)
        return true;
    reportErrno("remove", path, errno);
    return false;
}

// Handles an entry whose listing says neither regular file nor directory.
bool keepPlainFile(const std::string& path, const std::string& scratch) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0)
        return errno == ENOENT;
    if (S_ISREG(status.st_mode))
        return true;
    if (S_ISDIR(status.st_mode))
        return keepPlainFiles(path, scratch);
    if (S_ISLNK(status.st_mode) && isLinkToStoredFile(path))
        return replaceByCopy(path, scratch);
    report("pack", path, "left out, neither a plain file nor a link to a stored one");
    return remove(path);
}

} // namespace

bool isLinkToStoredFile(const std::string& link) {
    struct stat status = {};
    if (::stat(link.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    const std::unique_ptr<char, void (*)(void*)> target(::realpath(link.c_str(), nullptr), &std::free);
    // A relative link leads to a file beside it, which was staged with it.
    return target && (CCommUtils::isStartsWith(target.get(), std::string(paths::kHome) + "/") ||
                      CCommUtils::isStartsWith(target.get(), std::string(paths::kDownloadDir) + "/"));
}

bool keepPlainFiles(const std::string& directory, const std::string& scratch) {
    const auto listing = readWholeDirectory(directory);
    bool arePlain = listing.has_value();
    if (listing) {
        for (const DirEntry entry : *listing) {
            if (entry.type == EntryType::RegularFile)
                continue;
            const std::string path = entryPath(directory, entry.name);
            const bool isPlain = entry.type == EntryType::Directory ? keepPlainFiles(path, scratch)
                                                                    : keepPlainFile(path, scratch);
            arePlain = arePlain && isPlain;
        }
    }
    return arePlain;
}
