#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include "fileman/disk/Directory.h"

// The storage tree as one request sees it: each directory is read at most once, when it is first needed, and
// stays open until the next one is, so that depth costs no descriptors.
class StorageTree {
public:
    // Questions about paths below root are answered from the listings of their parents where these can tell.
    explicit StorageTree(std::string root) : m_root(std::move(root)) {}

    // The directory at path, or null when it cannot be opened. Pointers stay valid until forget.
    Directory* open(const std::string& path);

    // The same for an entry that a listing of its parent shows as a directory.
    Directory* openListed(const std::string& path);

    // The descriptor of a directory of this tree while it is open, -1 afterwards.
    int descriptorOf(const Directory& directory) const;

    // What access(path, F_OK) says.
    bool exists(const std::string& path);

    // Whether a walk from root along the listed directories passes path; none that it passes is a link.
    bool isListedDirectory(const std::string& path);

    // The next question reads the disk again.
    void forget();

    // How often the system failed to open, read or look for a place that may well be there. Each time a line
    // was written; a missing directory is no failure.
    std::size_t failures() const { return m_failures; }

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

    std::string m_root;
    std::unordered_map<std::string, Place> m_places;
    const Directory* m_openDirectory = nullptr; // the one read last
    UniqueFd m_openDescriptor;
    std::size_t m_failures = 0;
};
