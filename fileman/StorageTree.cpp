#include "fileman/StorageTree.h"

#include <dirent.h>
#include <fcntl.h>

#include <cstdint>
#include <cstring>
#include <memory>

#include "common/CCommUtils.h"
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
    return {std::string_view(m_at + kNameAt, length), static_cast<EntryType>(*m_at)};
}

Directory::Iterator& Directory::Iterator::operator++() {
    m_at += kNameAt + (**this).name.size() + 1;
    return *this;
}

void Directory::add(std::string_view name, EntryType type) {
    const auto length = static_cast<std::uint16_t>(name.size());
    m_packed.push_back(static_cast<char>(type));
    m_packed.append(reinterpret_cast<const char*>(&length), sizeof length).append(name).push_back('\0');
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

std::optional<Directory> readDirectory(const std::string& path) {
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(fd ? ::fdopendir(fd.get()) : nullptr, &::closedir);
    if (!stream)
        return std::nullopt;
    fd.release();
    Directory directory;
    while (const dirent* const entry = ::readdir(stream.get())) {
        const std::string_view name = entry->d_name;
        if (!isDotOrDotDot(name))
            directory.add(name, entryType(entry->d_type));
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
    return lookUp(path) == Answer::No ? nullptr : openListed(path);
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
