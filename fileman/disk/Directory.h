#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/UniqueFd.h"

// The type of an entry as the directory listing gives it. The program never calls stat for the type: an entry
// of unknown type counts as Other, like links, sockets and FIFOs.
enum class EntryType : unsigned char { RegularFile, Directory, Other };

struct DirEntry {
    std::string_view name; // zero-terminated; valid as long as the Directory exists
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

    // listing: the records of getdents64(2), one after the other. They are kept in the form of the system,
    // because unpacking 100,000 of them costs 2 % of the time of a list.
    explicit Directory(std::vector<char> listing) : m_listing(std::move(listing)) {}

    Iterator begin() const { return {m_listing.data(), m_listing.data() + m_listing.size()}; }
    Iterator end() const {
        return {m_listing.data() + m_listing.size(), m_listing.data() + m_listing.size()};
    }

    // Returns the type of the entry with this name, or nullopt without such an entry. The first call on a
    // long listing makes an index, because callers look for many names.
    std::optional<EntryType> find(std::string_view name);

private:
    std::vector<char> m_listing;
    using Index = std::unordered_map<std::string_view, EntryType>;
    std::unique_ptr<Index> m_index; // made by the first find in a long listing
};

// Returns directory + "/" + name.
std::string entryPath(std::string_view directory, std::string_view name);

// Opens and reads a directory. Links are followed. If the system fails to open or read it, a line on standard
// error says so. A missing directory, or one without permission for this user, is not a failure.
struct OpenedDirectory {
    explicit OpenedDirectory(const std::string& path);
    // The same for a directory that was just opened for reading, or could not be: then errno says why. path
    // is for the messages.
    OpenedDirectory(UniqueFd directory, const std::string& path);

    UniqueFd descriptor;
    std::optional<Directory> listing; // nullopt if it could not be opened; else all entries that were read
    bool hasFailed = false;
    bool isClosed = false; // to this user
};

// Returns only the listing, and closes the directory.
std::optional<Directory> readDirectory(const std::string& path);

// The same for callers that need every entry. Also returns nullopt when reading stops before the end.
std::optional<Directory> readWholeDirectory(const std::string& path);
