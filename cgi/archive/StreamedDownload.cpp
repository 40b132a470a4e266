#include "cgi/archive/StreamedDownload.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "cgi/archive/ArchiveStream.h"
#include "cgi/archive/EntryNames.h"
#include "cgi/archive/RecordFiles.h"
#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "common/Report.h"
#include "fileman/CResultItem.h"
#include "fileman/disk/StorageRoot.h"

namespace {

// A directory open at each level; a process may have 1,024 descriptors as a rule.
constexpr int kDeepest = 200;
// What readers of archives take for a path.
constexpr std::size_t kLongestEntry = 4095;

// Without blocking: a FIFO without a writer would hold the request for ever.
constexpr int kReadFile = O_RDONLY | O_NONBLOCK | O_NOCTTY;
constexpr int kReadDirectory = O_RDONLY | O_DIRECTORY;

constexpr char kMissingHead[] = "Not in this archive, although it was chosen:\n\n";

class Download {
public:
    explicit Download(std::function<bool()> begin) : m_archive(std::move(begin)), m_root(paths::kHome) {}

    void addRecord(const _ResultInfo& record);
    Streamed finish();
    bool hasEnded() const { return m_archive.hasEnded(); }

private:
    void addEntry(const SortedDirectory& directory, const DirEntry& entry, const std::string& place,
                  int depth);
    void addUnlisted(const SortedDirectory& directory, const DirEntry& entry, const std::string& place,
                     int depth);
    void addFile(UniqueFd file, const std::string& path, const std::string& place);
    void addDirectory(UniqueFd opened, const std::string& path, const std::string& place, int depth);
    bool isTooLong(const std::string& path, const std::string& name);
    void leaveOut(const std::string& path, int error);
    void leaveOut(const std::string& path, const std::string& why);
    const SortedDirectory& directoryOf(const std::string& path);

    ArchiveStream m_archive;
    StorageRoot m_root;
    EntryNames m_names;
    std::set<std::pair<std::string, std::string>>
        m_packed;                                 // unique names with storage paths without extension
    std::unique_ptr<SortedDirectory> m_directory; // of the last record
    std::string m_missing;                        // lines
    bool m_isAnythingStored = false;
};

UniqueFd openIn(const SortedDirectory& directory, const DirEntry& entry, int flags) {
    return UniqueFd(::openat(directory.descriptor(), entry.name.data(), flags | O_NOFOLLOW | O_CLOEXEC));
}

void Download::addRecord(const _ResultInfo& record) {
    const std::string name = CResultItem::uniqueName(&record);
    const SortedDirectory& directory = directoryOf(CCommUtils::absFilePath(record.path));
    // One name with several extensions is listed several times, and brings all its files each time.
    if (!m_packed.emplace(name, entryPath(directory.path(), record.name)).second)
        return;
    if (directory.openError() != 0)
        return leaveOut(record.path, directory.openError());
    if (!directory.isRead())
        return leaveOut(record.path, "its directory cannot be read");
    const auto entries = directory.entriesOf(record);
    if (entries.empty())
        return leaveOut(record.path, ENOENT);
    const std::string place = m_names.take("", name, EntryNames::Kind::Directory);
    for (const DirEntry& entry : entries)
        addEntry(directory, entry, place, 0);
}

// Records of one directory follow each other.
const SortedDirectory& Download::directoryOf(const std::string& path) {
    if (!m_directory || m_directory->path() != path) {
        m_directory.reset();
        m_directory = std::make_unique<SortedDirectory>(m_root.open(path, kReadDirectory), path);
    }
    return *m_directory;
}

void Download::addEntry(const SortedDirectory& directory, const DirEntry& entry, const std::string& place,
                        int depth) {
    if (hasEnded())
        return;
    const std::string path = entryPath(directory.path(), entry.name);
    if (entry.type == EntryType::Other)
        addUnlisted(directory, entry, place, depth);
    else if (entry.type == EntryType::RegularFile)
        addFile(openIn(directory, entry, kReadFile), path, place);
    else if (depth == kDeepest)
        leaveOut(path, "too many directories in each other");
    else
        addDirectory(openIn(directory, entry, kReadDirectory), path, place, depth + 1);
}

// The listing does not tell what it is. Links to stored files are packed as what they lead to.
void Download::addUnlisted(const SortedDirectory& directory, const DirEntry& entry, const std::string& place,
                           int depth) {
    const std::string path = entryPath(directory.path(), entry.name);
    struct stat status = {};
    if (::fstatat(directory.descriptor(), entry.name.data(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        leaveOut(path, errno);
    else if (S_ISLNK(status.st_mode))
        addFile(m_root.open(path, kReadFile), path, place);
    else if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode))
        addEntry(directory,
                 {entry.name, S_ISDIR(status.st_mode) ? EntryType::Directory : EntryType::RegularFile}, place,
                 depth);
    else
        leaveOut(path, "neither a file nor a link to one");
}

void Download::addFile(UniqueFd file, const std::string& path, const std::string& place) {
    struct stat status = {};
    if (!file || ::fstat(file.get(), &status) != 0)
        return leaveOut(path, errno);
    if (!S_ISREG(status.st_mode))
        return leaveOut(path, "neither a file nor a link to one");
    const std::string name = m_names.take(place, CCommUtils::completeFileName(path), EntryNames::Kind::File);
    if (!isTooLong(path, name))
        m_archive.addFile(name, file.get(), status.st_size, status.st_mtime);
}

void Download::addDirectory(UniqueFd opened, const std::string& path, const std::string& place, int depth) {
    const SortedDirectory directory(std::move(opened), path);
    if (directory.openError() != 0)
        return leaveOut(path, directory.openError());
    if (!directory.isRead())
        return leaveOut(path, "it cannot be read");
    const std::string name =
        m_names.take(place, CCommUtils::completeFileName(path), EntryNames::Kind::Directory);
    struct stat status = {};
    // The others stand in the names of their files.
    if (directory.entries().empty() && !isTooLong(path, name) &&
        ::fstat(directory.descriptor(), &status) == 0)
        m_archive.addDirectory(name, status.st_mtime);
    for (const DirEntry& entry : directory.entries())
        addEntry(directory, entry, name, depth);
}

bool Download::isTooLong(const std::string& path, const std::string& name) {
    if (name.size() <= kLongestEntry)
        return false;
    leaveOut(path, "its name in the archive is too long");
    return true;
}

void Download::leaveOut(const std::string& path, int error) {
    if (error == EXDEV)
        return leaveOut(path, "it lies outside the storage");
    if (error == ENOENT) {
        const bool wasStored = m_isAnythingStored;
        leaveOut(path, "it is stored no more");
        m_isAnythingStored = wasStored;
        return;
    }
    leaveOut(path, std::strerror(error));
}

void Download::leaveOut(const std::string& path, const std::string& why) {
    report("download", path, "left out, " + why);
    m_missing += plainName(path) + ": " + why + "\n";
    m_isAnythingStored = true;
}

Streamed Download::finish() {
    if (!m_archive.hasBegun())
        return m_isAnythingStored ? Streamed::NothingReadable : Streamed::NothingStored;
    if (!m_missing.empty())
        m_archive.addText(m_names.take("", "MISSING.txt", EntryNames::Kind::File), kMissingHead + m_missing,
                          std::time(nullptr));
    m_archive.finish();
    return Streamed::Sent;
}

} // namespace

Streamed streamDownload(const std::list<const _ResultInfo*>& records, std::function<bool()> begin) {
    Download download(std::move(begin));
    for (const _ResultInfo* const record : records) {
        if (!download.hasEnded())
            download.addRecord(*record);
    }
    return download.finish();
}
