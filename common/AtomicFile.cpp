#include "common/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "common/CCommUtils.h"
#include "common/Report.h"
#include "common/UniqueFd.h"
#include "common/WriteAll.h"

namespace {

constexpr auto kNoOwner = static_cast<uid_t>(-1); // leave it as it is

bool takeOverAttributes(int file, const std::string& from) {
    struct stat status = {};
    if (::stat(from.c_str(), &status) != 0)
        return false;
    // Only root may give files away: another writer's file becomes the writer's, and keeps its group when the
    // writer is a member of it. Before fchmod, since a change of owner clears the set-id bits.
    if (::fchown(file, status.st_uid, status.st_gid) != 0 &&
        (errno != EPERM || (::fchown(file, kNoOwner, status.st_gid) != 0 && errno != EPERM)))
        return false;
    return ::fchmod(file, status.st_mode & 07777) == 0;
}

// Content, attributes and durability of the new file, before any name points at it.
bool fillNewFile(UniqueFd& file, const std::string& target, std::string_view content) {
    return takeOverAttributes(file.get(), target) && writeAll(file.get(), content) &&
           ::fsync(file.get()) == 0 && file.reset() == 0;
}

// Makes the file that bears the temporary name the target, and that durable. The directory is opened first:
// what can fail should fail as long as the old file stands.
bool moveInto(const std::string& target, const std::string& temporary) {
    const std::string path = CCommUtils::absFilePath(target) + "/";
    const UniqueFd directory(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return directory && ::rename(temporary.c_str(), target.c_str()) == 0 && ::fsync(directory.get()) == 0;
}

} // namespace

std::string resolveLinks(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    return resolved ? resolved.get() : std::string();
}

bool replaceFile(const std::string& path, std::string_view content) {
    const std::string target = resolveLinks(path);
    std::string temporary = target + ".XXXXXX";
    UniqueFd file(target.empty() ? -1 : ::mkostemp(temporary.data(), O_CLOEXEC));
    if (!file) {
        reportErrno("cannot create a new version of", path, errno);
        return false;
    }
    if (!fillNewFile(file, target, content) || !moveInto(target, temporary)) {
        reportErrno("cannot replace", target, errno);
        // No longer there when only the last step failed.
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}
