#include "cgi/archive/StreamedDownload.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "cgi/archive/ArchiveStream.h"
#include "cgi/archive/EntryNames.h"
#include "cgi/archive/RecordFiles.h"
#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "common/Report.h"
#include "fileman/CResultItem.h"
#include "fileman/disk/StorageLinks.h"

namespace {

// Without O_NONBLOCK a FIFO without a writer would block the request for ever.
constexpr int kReadFile = O_RDONLY | O_NONBLOCK | O_NOCTTY;
constexpr int kReadDirectory = O_RDONLY | O_DIRECTORY;

constexpr char kMissingHead[] = "This was chosen and is not in this archive:\n\n";

enum class IsStored { No, Yes };

class Download {
public:
    explicit Download(std::function<void()> begin) : m_archive(std::move(begin)), m_root(paths::kHome) {}

    void addRecord(const _ResultInfo& record);
    void leaveOut(const std::string& subject, std::string_view why, IsStored isStored = IsStored::Yes);
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
    const SortedDirectory& directoryOf(const std::string& path);

    ArchiveStream m_archive;
    StorageLinks m_root;
    EntryNames m_names;
    std::set<std::pair<std::string, std::string>> m_added; // name in the archive and path of each record
    std::unique_ptr<SortedDirectory> m_directory;          // the directory of the last record
    std::string m_missing;                                 // the lines of MISSING.txt
    bool m_isAnythingStored = false;
};

UniqueFd openIn(const SortedDirectory& directory, const DirEntry& entry, int flags) {
    return UniqueFd(::openat(directory.descriptor(), entry.name.data(), flags | O_NOFOLLOW | O_CLOEXEC));
}

void Download::addRecord(const _ResultInfo& record) {
    const std::string name = CResultItem::uniqueName(&record);
    const SortedDirectory& directory = directoryOf(CCommUtils::absFilePath(record.path));
    // Files with the same name and different extensions are different records, but each of these records has
    // all the files. So they are packed only once. A record without a name has only its own file.
    const std::string from = record.name.empty() ? record.path : entryPath(directory.path(), record.name);
    if (!m_added.emplace(name, from).second)
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

// Keeps the last directory open, because records of the same directory follow each other.
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
    else if (depth == SortedDirectory::kDeepest)
        leaveOut(path, "too many directories in each other");
    else
        addDirectory(openIn(directory, entry, kReadDirectory), path, place, depth + 1);
}

// Adds an entry if the listing does not give its type. A link to a stored file is packed as that file.
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
    // Only an empty directory needs its own entry. The names of files contain all other directories.
    if (directory.entries().empty() && !isTooLong(path, name) &&
        ::fstat(directory.descriptor(), &status) == 0)
        m_archive.addDirectory(name, status.st_mtime);
    for (const DirEntry& entry : directory.entries())
        addEntry(directory, entry, name, depth);
}

bool Download::isTooLong(const std::string& path, const std::string& name) {
    if (name.size() <= EntryNames::kLongest)
        return false;
    leaveOut(path, "its name in the archive is too long");
    return true;
}

void Download::leaveOut(const std::string& path, int error) {
    if (error == EXDEV)
        leaveOut(path, "it lies outside the storage");
    else if (error == ENOENT)
        leaveOut(path, "it is no longer stored", IsStored::No);
    else
        leaveOut(path, std::strerror(error));
}

void Download::leaveOut(const std::string& subject, std::string_view why, IsStored isStored) {
    report("download", subject, std::string("left out, ").append(why));
    m_missing += plainName(subject).append(": ").append(why) + "\n";
    m_isAnythingStored = m_isAnythingStored || isStored == IsStored::Yes;
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

Streamed streamDownload(const std::list<const _ResultInfo*>& records, const std::list<std::string>& unknown,
                        std::function<void()> begin) {
    Download download(std::move(begin));
    for (const _ResultInfo* const record : records) {
        if (!download.hasEnded())
            download.addRecord(*record);
    }
    for (const std::string& id : unknown)
        download.leaveOut(id, "no such result", IsStored::No);
    return download.finish();
}
