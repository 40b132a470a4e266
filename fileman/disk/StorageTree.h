#pragma once

#include <cstddef>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "common/FileDate.h"
#include "common/UniqueFd.h"

// What a directory listing tells of one entry. No entry is ever stat'ed for its type: entries of unknown type
// count as Other, like links, sockets and FIFOs.
enum class EntryType : unsigned char { RegularFile, Directory, Other };

struct DirEntry {
    std::string_view name; // zero-terminated; lives as long as the directory
    EntryType type;
};

// Stands for a status-change time that nobody has asked for yet.
inline constexpr std::time_t kTimeNotAsked = kUnknownTime + 1;

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

    // listing: the records of getdents64(2), one behind the other.
    explicit Directory(std::vector<char> listing);

    Iterator begin() const { return {m_listing.data(), m_listing.data() + m_listing.size()}; }
    Iterator end() const {
        return {m_listing.data() + m_listing.size(), m_listing.data() + m_listing.size()};
    }

    // The entry's type; nothing when there is none of that name. A long listing is indexed, for callers that
    // ask for many.
    std::optional<EntryType> find(std::string_view name) const;

    // The entry's status-change time as far as somebody has found it out and kept it here; kTimeNotAsked
    // before. name: of an entry of a directory, in the listing itself.
    static std::time_t changeTime(const char* name);
    // name: of an entry of this directory.
    void keepChangeTime(const char* name, std::time_t time) const;

private:
    mutable std::vector<char>
        m_listing; // in place of its inode number, which nobody asks for, an entry has its time
    using Index = std::unordered_map<std::string_view, EntryType>;
    mutable std::unique_ptr<Index> m_index; // made by the first find
};

// directory + "/" + name.
std::string entryPath(std::string_view directory, std::string_view name);

// Reads a directory from disk and closes it; nothing when it cannot be opened. Links are followed. What keeps
// the system from opening it or from reading on gets a line on standard error, unless the directory is
// missing or closed to this user; what was read is kept.
std::optional<Directory> readDirectory(const std::string& path);

// The storage tree as one request sees it: each directory is read at most once, when it is first asked for,
// and stays open until the next one is, so that depth costs no descriptors.
class StorageTree {
public:
    // What is asked about paths below root is answered from the listings of their parents where these can
    // tell.
    explicit StorageTree(std::string root) : m_root(std::move(root)) {}

    // The directory at path, or null when it cannot be opened. Pointers stay valid as long as the tree.
    const Directory* open(const std::string& path);

    // The same for an entry that a listing of its parent told to be a directory.
    const Directory* openListed(const std::string& path);

    // The descriptor of a directory of this tree while it is open, -1 afterwards.
    int descriptorOf(const Directory& directory) const;

    // What access(path, F_OK) says.
    bool exists(const std::string& path);

    // How often the system failed to open, read or look for a place that may well be there. Each time a line
    // was written; a missing directory is no failure.
    std::size_t failures() const { return m_failures; }

    // Whether a walk from root along the listed directories passes path; none that it passes is a link.
    bool isListedDirectory(const std::string& path);

private:
    enum class Answer { Nothing, Directory, File, AskSystem };
    // A directory that was opened. Listed: all names on the way to it are directories in the listings.
    struct Place {
        std::optional<Directory> directory; // nothing when it cannot be opened
        bool isListed = false;
    };
    Place& visit(const std::string& path);
    Answer lookUp(const std::string& path);
    bool askSystem(const std::string& path);
    static Answer answerOf(const Directory& parent, std::string_view name);

    std::string m_root;
    std::unordered_map<std::string, Place> m_places;
    const Directory* m_openDirectory = nullptr; // the one read last
    UniqueFd m_openFd;
    std::size_t m_failures = 0;
};
