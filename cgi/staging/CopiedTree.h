#pragma once

#include <sys/stat.h>

#include <ctime>
#include <string>

#include "fileman/disk/Directory.h"

// Files and directories copied out of the storage, compared with what they were copied from.
//
// A test may write its results while they are copied: what changed after the copying began need not be equal.
class CopiedTree {
public:
    // begun: when the copying began, from now().
    explicit CopiedTree(timespec begun) : m_begun(begun) {}
    static timespec now();

    // Whether a copy of every file and directory at source stands at copy, files in full length. type: what
    // the listing tells of source.
    bool isWhole(const std::string& source, const std::string& copy, EntryType type) const;

    // Does what "cp -rf" does; false with a line on standard error when something is not copied. FIFOs and
    // devices are left out as they are from every archive.
    bool make(const std::string& source, const std::string& copy, EntryType type) const;

private:
    bool hasChanged(const struct stat& source) const;
    bool isWholeFile(const struct stat& source, const std::string& copy) const;
    bool isWholeDirectory(const std::string& source, const std::string& copy) const;
    bool makeDirectory(const std::string& source, const std::string& copy, mode_t mode) const;

    timespec m_begun;
};
