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

constexpr auto kNoOwner = static_cast<uid_t>(-1); // fchown keeps the owner

bool takeOverAttributes(int file, const std::string& from) {
    struct stat status = {};
    if (::stat(from.c_str(), &status) != 0)
        return false;
    // Only root may give files away. For any other writer, the new file belongs to the writer, and it keeps
    // the old group if the writer is a member. fchown comes before fchmod, because it clears the set-id bits.
    if (::fchown(file, status.st_uid, status.st_gid) != 0 &&
        (errno != EPERM || (::fchown(file, kNoOwner, status.st_gid) != 0 && errno != EPERM)))
        return false;
    return ::fchmod(file, status.st_mode & 07777) == 0;
}

// Writes content and attributes of the new file to disk, before it gets its final name.
bool fillNewFile(UniqueFd& file, const std::string& target, std::string_view content) {
    return takeOverAttributes(file.get(), target) && writeAll(file.get(), content) &&
           ::fsync(file.get()) == 0 && file.reset() == 0;
}

// Renames the temporary file to the target and writes the directory to disk. The directory is opened first: a
// step that can fail should fail while the old file is still in place.
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
        // The temporary name no longer exists when only the last step failed.
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}
