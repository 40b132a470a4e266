#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fileman/ResultInfo.h"
#include "fileman/disk/Directory.h"

// These belong to a record: its page and data (NAME.*), a file or directory NAME, and the directory
// NAME_files with the pictures of the page.
bool belongsToRecord(std::string_view name, std::string_view entry);

// A directory that is open and was read, its entries in the order of their bytes: a record's files are found
// without a walk through all of them.
class SortedDirectory {
public:
    // path: for messages, and to find what links in it lead to. A directory that could not be opened (errno
    // tells why) or not be read to its end has no entries.
    SortedDirectory(UniqueFd directory, const std::string& path);

    bool isRead() const { return m_isRead; }
    // Why it could not be opened; 0 when it was.
    int openError() const { return m_openError; }
    int descriptor() const { return m_opened.descriptor.get(); }
    const std::string& path() const { return m_path; }

    const std::vector<DirEntry>& entries() const { return m_entries; }
    // What belongs to a record of this directory. A file whose name begins with a dot is alone: its record
    // has an empty name, to which every such file would belong.
    std::vector<DirEntry> entriesOf(const _ResultInfo& record) const;

private:
    std::string m_path;
    int m_openError;
    OpenedDirectory m_opened;
    bool m_isRead;
    std::vector<DirEntry> m_entries;
};
