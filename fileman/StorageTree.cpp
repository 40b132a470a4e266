#include "fileman/StorageTree.h"

#include <dirent.h>
#include <fcntl.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "common/CCommUtils.h"
#include "common/FileDate.h"
#include "common/UniqueFd.h"

namespace {

constexpr std::size_t kLengthAt = 1;
constexpr std::size_t kNameAt = kLengthAt + sizeof(std::uint16_t);

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

bool isDotOrDotDot(std::string_view name) {
    return name == "." || name == "..";
}

} // namespace

DirEntry Directory::Iterator::operator*() const {
    std::uint16_t length = 0;
    std::memcpy(&length, m_at + kLengthAt, sizeof length);
    return {std::string_view(m_at + kNameAt, length), static_cast<EntryType>(*m_at), m_index};
}

Directory::Iterator& Directory::Iterator::operator++() {
    m_at += kNameAt + (**this).name.size() + 1;
    ++m_index;
    return *this;
}

void Directory::add(std::string_view name, EntryType type) {
    const auto length = static_cast<std::uint16_t>(name.size());
    const std::size_t at = m_packed.size();
    m_packed.resize(at + kNameAt + name.size() + 1);
    m_packed[at] = static_cast<char>(type);
    std::memcpy(&m_packed[at + kLengthAt], &length, sizeof length);
    std::memcpy(&m_packed[at + kNameAt], name.data(), name.size());
    ++m_size;
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

std::time_t& Directory::changeTime(const DirEntry& entry) const {
    if (m_changeTimes.empty())
        m_changeTimes.assign(m_size, kUnknownTime);
    return m_changeTimes[entry.index];
}

// Without opendir: its stat, its buffer from the heap and a second look at the descriptor cost as much as
// reading a small directory.
std::optional<Directory> readDirectory(const std::string& path) {
    alignas(dirent64) std::array<char, 32768> buffer;
    const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd)
        return std::nullopt;
    Directory directory;
    for (ssize_t size = 0; (size = ::getdents64(fd.get(), buffer.data(), buffer.size())) > 0;) {
        for (ssize_t at = 0; at < size;) {
            const auto* const entry = reinterpret_cast<const dirent64*>(buffer.data() + at);
            const std::string_view name = entry->d_name;
            if (!isDotOrDotDot(name))
                directory.add(name, entryType(entry->d_type));
            at += entry->d_reclen;
        }
    }
    return directory;
}

const Directory* StorageTree::openListed(const std::string& path) {
    const auto [place, isNew] = m_directories.try_emplace(path);
    if (isNew)
        place->second = readDirectory(path);
    return place->second ? &*place->second : nullptr;
}

const Directory* StorageTree::open(const std::string& path) {
    if (m_directories.count(path) == 0 && lookUp(path) == Answer::No)
        return nullptr;
    return openListed(path);
}

bool StorageTree::exists(const std::string& path) {
    const Answer answer = lookUp(path);
    return answer == Answer::AskSystem ? CCommUtils::isDirExists(path) : answer == Answer::Yes;
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
        if (parent == nullptr || name.empty() || isDotOrDotDot(name))
            return Answer::AskSystem;
        const std::optional<EntryType> type = parent->find(name);
        if (!type)
            return Answer::No;
        if (*type == EntryType::Other)
            return Answer::AskSystem;
        if (*type == EntryType::RegularFile && next != std::string::npos)
            return Answer::No;
        slash = next;
    }
    return Answer::Yes;
}
