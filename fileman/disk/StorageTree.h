#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include "fileman/disk/Directory.h"

// The storage tree for one request. Each directory is read at most once, when it is first needed. It stays
// open only until the next one is opened, so that a deep tree needs no more descriptors.
class StorageTree {
public:
    // Questions about paths below root are answered from the listings of their parents where this is
    // possible.
    explicit StorageTree(std::string root) : m_root(std::move(root)) {}

    // Returns the directory at path, or null when it cannot be opened. The pointer is valid until forget.
    Directory* open(const std::string& path);

    // The same for a path that the listing of its parent shows as a directory.
    Directory* openListed(const std::string& path);

    // Returns the descriptor of a directory of this tree while it is open, -1 afterwards.
    int descriptorOf(const Directory& directory) const;

    // Whether the path exists; the same answer as access(path, F_OK).
    bool exists(const std::string& path);

    // Whether path is a directory, and each component below root too, according to the listings. A path with
    // a link is none.
    bool isListedDirectory(const std::string& path);

    // Forgets all listings: the next question reads the disk again.
    void forget();

    // How many places could not be opened, read or looked for, although they may exist: either the system
    // failed, which was reported on standard error, or the directory is closed to this user. A missing
    // directory is not a failure.
    std::size_t failures() const { return m_failures; }

private:
    enum class Answer { Nothing, Directory, File, AskSystem };
    struct Place {
        std::optional<Directory> directory; // nullopt when it cannot be opened
        bool isListed = false;              // all components of its path are directories in the listings
    };
    Place& visit(const std::string& path);
    Answer lookUp(const std::string& path);
    bool askSystem(const std::string& path);

    std::string m_root;
    std::unordered_map<std::string, Place> m_places;
    const Directory* m_openDirectory = nullptr; // the one read last
    UniqueFd m_openDescriptor;
    std::size_t m_failures = 0;
};
