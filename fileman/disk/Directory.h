#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/UniqueFd.h"

// What a directory listing tells of one entry. No entry is ever stat'ed for its type: entries of unknown type
// count as Other, like links, sockets and FIFOs.
enum class EntryType : unsigned char { RegularFile, Directory, Other };

struct DirEntry {
    std::string_view name; // zero-terminated; lives as long as the directory
    EntryType type;
};

// The entries of one directory in listing order, without "." and "..".
class Directory {
public:
    class Iterator {
    public:
        Iterator(const char* at, const char* end);
        DirEntry operator*() const;
        Iterator& operator++();
        bool operator!=(const Iterator& other) const { return m_at != other.m_at; }

    private:
        void skipDots();

        const char* m_at;
        const char* m_end;
    };

    // listing: the records of getdents64(2), one behind the other. They are kept as the system writes them:
    // to unpack 100,000 of them costs 2 % of a list.
    explicit Directory(std::vector<char> listing) : m_listing(std::move(listing)) {}

    Iterator begin() const { return {m_listing.data(), m_listing.data() + m_listing.size()}; }
    Iterator end() const {
        return {m_listing.data() + m_listing.size(), m_listing.data() + m_listing.size()};
    }

    // The entry's type; nothing when there is none of that name. A long listing is indexed first, for callers
    // that look for many names.
    std::optional<EntryType> find(std::string_view name);

private:
    std::vector<char> m_listing;
    using Index = std::unordered_map<std::string_view, EntryType>;
    std::unique_ptr<Index> m_index; // made by the first find in a long listing
};

// directory + "/" + name.
std::string entryPath(std::string_view directory, std::string_view name);

// A directory that was opened and read. Links are followed. When the system fails to open it or to read on, a
// line on standard error says so, but a missing directory and one closed to this user are no failures.
struct OpenedDirectory {
    explicit OpenedDirectory(const std::string& path);

    UniqueFd descriptor;
    std::optional<Directory> listing; // nothing when it could not be opened; else all that was read
    bool hasFailed = false;
};

// The listing alone; the directory is closed again.
std::optional<Directory> readDirectory(const std::string& path);

// The same for callers that need every entry: nothing, too, when the reading breaks off.
std::optional<Directory> readWholeDirectory(const std::string& path);
