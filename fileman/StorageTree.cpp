#include "fileman/StorageTree.h"

#include <dirent.h>
#include <fcntl.h>

#include <array>
#include <cstddef>
#include <cstring>

#include "common/CCommUtils.h"
#include "common/FileDate.h"
#include "common/UniqueFd.h"

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

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
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
    while (m_at != m_end && isDotOrDotDot(recordAt(m_at).d_name))
        m_at += recordAt(m_at).d_reclen;
}

std::optional<EntryType> Directory::find(std::string_view name) const {
    if (m_index.empty()) {
        for (const DirEntry entry : *this)
            m_index.emplace(entry.name, entry.type);
    }
    const auto found = m_index.find(name);
    return found == m_index.end() ? std::nullopt : std::optional<EntryType>(found->second);
}

std::string entryPath(std::string_view directory, std::string_view name) {
    std::string path;
    path.reserve(directory.size() + 1 + name.size());
    return path.append(directory).append("/").append(name);
}

Directory::Directory(std::vector<char> listing) : m_listing(std::move(listing)) {
    for (std::size_t at = 0; at < m_listing.size(); at += recordAt(&m_listing[at]).d_reclen)
        std::memcpy(&m_listing[at + offsetof(dirent64, d_ino)], &kUnknownTime, sizeof kUnknownTime);
}

char* Directory::placeOfTime(const DirEntry& entry) const {
    static_assert(sizeof(dirent64::d_ino) >= sizeof(std::time_t));
    const char* const record = entry.name.data() - offsetof(dirent64, d_name);
    return m_listing.data() + (record - m_listing.data()) + offsetof(dirent64, d_ino);
}

std::time_t Directory::changeTime(const DirEntry& entry) const {
    std::time_t time = kUnknownTime;
    std::memcpy(&time, placeOfTime(entry), sizeof time);
    return time;
}

void Directory::keepChangeTime(const DirEntry& entry, std::time_t time) const {
    std::memcpy(placeOfTime(entry), &time, sizeof time);
}

// The records are kept as the system writes them: there is no cheaper form to make. opendir would add a stat,
// a buffer from the heap and a second look at the descriptor, as much as reading a small directory.
std::optional<Directory> readDirectory(const std::string& path) {
    alignas(dirent64) std::array<char, 32768> buffer;
    const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd)
        return std::nullopt;
    std::vector<char> listing;
    for (ssize_t size = 0; (size = ::getdents64(fd.get(), buffer.data(), buffer.size())) > 0;)
        listing.insert(listing.end(), buffer.data(), buffer.data() + size);
    return Directory(std::move(listing));
}

const Directory* StorageTree::openListed(const std::string& path) {
    const auto [place, isNew] = m_directories.try_emplace(path);
    if (isNew)
        place->second = readDirectory(path);
    return place->second ? &*place->second : nullptr;
}

const Directory* StorageTree::open(const std::string& path) {
    if (m_directories.count(path) == 0 && lookUp(path) == Answer::Nothing)
        return nullptr;
    return openListed(path);
}

bool StorageTree::exists(const std::string& path) {
    const Answer answer = lookUp(path);
    return answer == Answer::AskSystem ? CCommUtils::isDirExists(path) : answer != Answer::Nothing;
}

bool StorageTree::isListedDirectory(const std::string& path) {
    return lookUp(path) == Answer::Directory;
}

// Walks down from the root. Whatever passes through a link, a dot entry or an empty component is left to the
// system, which alone knows what that means.
StorageTree::Answer StorageTree::lookUp(const std::string& path) {
    if (!CCommUtils::isStartsWith(path, m_root + "/"))
        return Answer::AskSystem;
    for (std::size_t slash = m_root.size(); slash != std::string::npos;) {
        const Directory* const parent = openListed(path.substr(0, slash));
        const std::size_t next = path.find('/', slash + 1);
        const std::string_view name = std::string_view(path).substr(slash + 1, next - slash - 1);
        if (parent == nullptr || name.empty() || name == "." || name == "..")
            return Answer::AskSystem;
        const std::optional<EntryType> type = parent->find(name);
        if (!type)
            return Answer::Nothing;
        if (*type == EntryType::Other)
            return Answer::AskSystem;
        if (*type == EntryType::RegularFile)
            return next == std::string::npos ? Answer::File : Answer::Nothing;
        slash = next;
    }
    return Answer::Directory;
}
