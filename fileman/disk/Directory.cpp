#include "fileman/disk/Directory.h"

#include <dirent.h>
#include <fcntl.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "common/DotEntry.h"
#include "common/Report.h"
#include "common/Retry.h"

namespace {

// In bytes, about fifty entries. Up to this size a walk through the listing is cheaper than an index.
constexpr std::size_t kShortListing = 2048;

EntryType entryType(unsigned char listed) {
    switch (listed) {
    case DT_REG:
        return EntryType::RegularFile;
    case DT_DIR:
        return EntryType::Directory;
    default:
        return EntryType::Other;
    }
}

const dirent64& recordAt(const char* at) {
    return *reinterpret_cast<const dirent64*>(at);
}

} // namespace

Directory::Iterator::Iterator(const char* at, const char* end) : m_at(at), m_end(end) {
    skipDots();
}

DirEntry Directory::Iterator::operator*() const {
    const dirent64& record = recordAt(m_at);
    return {record.d_name, entryType(record.d_type)};
}

Directory::Iterator& Directory::Iterator::operator++() {
    m_at += recordAt(m_at).d_reclen;
    skipDots();
    return *this;
}

void Directory::Iterator::skipDots() {
    while (m_at != m_end && isDotEntry(recordAt(m_at).d_name))
        m_at += recordAt(m_at).d_reclen;
}

std::optional<EntryType> Directory::find(std::string_view name) {
    if (m_listing.size() <= kShortListing) {
        for (const DirEntry entry : *this) {
            if (entry.name == name)
                return entry.type;
        }
        return std::nullopt;
    }
    if (!m_index) {
        m_index = std::make_unique<Index>();
        for (const DirEntry entry : *this)
            m_index->emplace(entry.name, entry.type);
    }
    const auto found = m_index->find(name);
    return found == m_index->end() ? std::nullopt : std::optional<EntryType>(found->second);
}

std::string entryPath(std::string_view directory, std::string_view name) {
    std::string path;
    path.reserve(directory.size() + 1 + name.size());
    return path.append(directory).append("/").append(name);
}

OpenedDirectory::OpenedDirectory(const std::string& path)
    : OpenedDirectory(UniqueFd(retryInterrupted(
                          [&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); })),
                      path) {}

// This calls getdents64 itself. opendir would add a stat, a heap buffer and one more system call on the
// descriptor, which together cost as much as reading a small directory.
OpenedDirectory::OpenedDirectory(UniqueFd directory, const std::string& path)
    : descriptor(std::move(directory)) {
    if (!descriptor) {
        isClosed = errno == EACCES;
        hasFailed = reportUnlessAbsent("open directory", path, errno);
        return;
    }
    alignas(dirent64) std::array<char, 32768> buffer;
    std::vector<char> records;
    const auto readSome = [&] { return ::getdents64(descriptor.get(), buffer.data(), buffer.size()); };
    ssize_t size = 0;
    while ((size = retryInterrupted(readSome)) > 0)
        records.insert(records.end(), buffer.data(), buffer.data() + size);
    if (size < 0 && errno != ENOENT) { // ENOENT: the directory was removed while it was open
        report("read directory", path, std::string("broken off, ") + std::strerror(errno));
        hasFailed = true;
    }
    listing.emplace(std::move(records));
}

std::optional<Directory> readDirectory(const std::string& path) {
    return OpenedDirectory(path).listing;
}

std::optional<Directory> readWholeDirectory(const std::string& path) {
    OpenedDirectory opened(path);
    return opened.hasFailed ? std::nullopt : std::move(opened.listing);
}
