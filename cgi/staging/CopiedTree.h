#pragma once

#include <sys/stat.h>

#include <ctime>
#include <string>

#include "fileman/disk/Directory.h"

// Compares files and directories that were copied out of the storage with their sources.
//
// A test may write its results while they are copied. So a source that changed after the copying began may
// differ from its copy.
class CopiedTree {
public:
    // begun: the time before the copying, from now().
    explicit CopiedTree(timespec begun) : m_begun(begun) {}
    static timespec now();

    // Whether copy contains every file and directory of source, with files in full length. type: the type of
    // source in its listing.
    bool isWhole(const std::string& source, const std::string& copy, EntryType type) const;

    // Copies like "cp -rf". Returns false, with a line on standard error, when something is not copied. FIFOs
    // and devices are left out, as from every archive.
    bool make(const std::string& source, const std::string& copy, EntryType type) const;

private:
    bool hasChanged(const struct stat& source) const;
    bool isWholeFile(const struct stat& source, const std::string& copy) const;
    bool isWholeDirectory(const std::string& source, const std::string& copy) const;
    bool makeDirectory(const std::string& source, const std::string& copy, mode_t mode) const;

    timespec m_begun;
};
