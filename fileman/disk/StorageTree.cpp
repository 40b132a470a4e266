#include "fileman/disk/StorageTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>

#include "common/FileDate.h"
#include "common/Report.h"
#include "common/Retry.h"

namespace {

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

// Up to some fifty entries, walking the listing is cheaper than the first look-up in an index.
constexpr std::size_t kShortListing = 2048;

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

const dirent64& recordAt(const char* at) {
    return *reinterpret_cast<const dirent64*>(at);
}

// This and readListing count the failures that they report.
UniqueFd openDirectory(const std::string& path, std::size_t& failures) {
    UniqueFd fd(retryInterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!fd && reportUnlessAbsent("open directory", path, errno))
        ++failures;
    return fd;
}

// The records are kept as the system writes them: there is no cheaper form to make. opendir would add a stat,
// a buffer from the heap and a second look at the descriptor, as much as reading a small directory.
// When the reading breaks off, what was read until then counts.
Directory readListing(const UniqueFd& fd, const std::string& path, std::size_t& failures) {
    alignas(dirent64) std::array<char, 32768> buffer;
    std::vector<char> listing;
    const auto readSome = [&] { return ::getdents64(fd.get(), buffer.data(), buffer.size()); };
    ssize_t size = 0;
    while ((size = retryInterrupted(readSome)) > 0)
        listing.insert(listing.end(), buffer.data(), buffer.data() + size);
    if (size < 0 && errno != ENOENT) { // that one says that the directory was removed
        report("read directory", path, std::string("broken off, ") + std::strerror(errno));
        ++failures;
    }
    return Directory(std::move(listing));
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
    while (m_at != m_end && isDotOrDotDot(recordAt(m_at).d_name))
        m_at += recordAt(m_at).d_reclen;
}

std::optional<EntryType> Directory::find(std::string_view name) const {
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

Directory::Directory(std::vector<char> listing) : m_listing(std::move(listing)) {
    for (std::size_t at = 0; at < m_listing.size(); at += recordAt(&m_listing[at]).d_reclen)
        std::memcpy(&m_listing[at + offsetof(dirent64, d_ino)], &kTimeNotAsked, sizeof kTimeNotAsked);
}

std::time_t Directory::changeTime(const char* name) {
    static_assert(sizeof(dirent64::d_ino) >= sizeof(std::time_t));
    std::time_t time = kTimeNotAsked;
    std::memcpy(&time, name - offsetof(dirent64, d_name) + offsetof(dirent64, d_ino), sizeof time);
    return time;
}

void Directory::keepChangeTime(const char* name, std::time_t time) const {
    char* const record = m_listing.data() + (name - offsetof(dirent64, d_name) - m_listing.data());
    std::memcpy(record + offsetof(dirent64, d_ino), &time, sizeof time);
}

std::optional<Directory> readDirectory(const std::string& path) {
    std::size_t failures = 0;
    const UniqueFd fd = openDirectory(path, failures);
    return fd ? std::optional(readListing(fd, path, failures)) : std::nullopt;
}

StorageTree::Place& StorageTree::visit(const std::string& path) {
    const auto [position, isNew] = m_places.try_emplace(path);
    Place& place = position->second;
    if (!isNew)
        return place;
    m_openFd.reset();
    m_openFd = openDirectory(path, m_failures);
    if (m_openFd)
        place.directory = readListing(m_openFd, path, m_failures);
    m_openDirectory = m_openFd ? &*place.directory : nullptr;
    return place;
}

int StorageTree::descriptorOf(const Directory& directory) const {
    return &directory == m_openDirectory ? m_openFd.get() : -1;
}

const Directory* StorageTree::openListed(const std::string& path) {
    const Place& place = visit(path);
    return place.directory ? &*place.directory : nullptr;
}

const Directory* StorageTree::open(const std::string& path) {
    const bool isMissing = m_places.count(path) == 0 && lookUp(path) == Answer::Nothing;
    return isMissing ? nullptr : openListed(path);
}

bool StorageTree::exists(const std::string& path) {
    const Answer answer = lookUp(path);
    return answer == Answer::AskSystem ? askSystem(path) : answer != Answer::Nothing;
}

bool StorageTree::askSystem(const std::string& path) {
    if (retryInterrupted([&] { return ::access(path.c_str(), F_OK); }) == 0)
        return true;
    if (reportUnlessAbsent("look for", path, errno))
        ++m_failures;
    return false;
}

bool StorageTree::isListedDirectory(const std::string& path) {
    return lookUp(path) == Answer::Directory;
}

StorageTree::Answer StorageTree::answerOf(const Directory& parent, std::string_view name) {
    const std::optional<EntryType> type = parent.find(name);
    if (!type)
        return Answer::Nothing;
    switch (*type) {
    case EntryType::Directory:
        return Answer::Directory;
    case EntryType::RegularFile:
        return Answer::File;
    case EntryType::Other:
        break;
    }
    return Answer::AskSystem;
}

// From path up to the first place that is known, and down again. Whatever passes through a link, a dot entry
// or an empty component is left to the system, which alone knows what that means.
StorageTree::Answer StorageTree::lookUp(const std::string& path) {
    if (path == m_root)
        return Answer::Directory;
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos || slash < m_root.size() || path.size() >= PATH_MAX)
        return Answer::AskSystem;
    const std::string_view name = std::string_view(path).substr(slash + 1);
    if (name.empty() || name == "." || name == "..")
        return Answer::AskSystem;
    const std::string parent = path.substr(0, slash);
    const auto known = m_places.find(parent);
    Place* place = known == m_places.end() ? nullptr : &known->second;
    if (place == nullptr || !place->isListed) {
        const Answer answer = lookUp(parent);
        if (answer != Answer::Directory)
            return answer == Answer::File ? Answer::Nothing : answer;
        place = &visit(parent);
        place->isListed = true;
    }
    return place->directory ? answerOf(*place->directory, name) : Answer::AskSystem;
}
