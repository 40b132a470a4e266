#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fileman/ResultInfo.h"
#include "fileman/disk/Directory.h"

// These belong to a record: its page and data (NAME.*), a file or directory NAME, and the directory
// NAME_files with the pictures of the page.
bool belongsToRecord(std::string_view name, std::string_view entry);

// An open directory with its entries in byte order, so that the files of a record are found without a walk
// through all entries.
class SortedDirectory {
public:
    // path: for messages, and to resolve links in the directory. If the directory could not be opened (errno
    // gives the reason) or not be read to its end, it has no entries.
    SortedDirectory(UniqueFd directory, const std::string& path);

    bool isRead() const { return m_isRead; }
    // The errno value if it could not be opened, else 0.
    int openError() const { return m_openError; }
    int descriptor() const { return m_opened.descriptor.get(); }
    const std::string& path() const { return m_path; }

    const std::vector<DirEntry>& entries() const { return m_entries; }
    // Returns the entries of a record in this directory. For a file whose name begins with a dot, it is only
    // that file: its record has an empty name, and every such file would belong to it.
    std::vector<DirEntry> entriesOf(const _ResultInfo& record) const;

private:
    std::string m_path;
    int m_openError;
    OpenedDirectory m_opened;
    bool m_isRead;
    std::vector<DirEntry> m_entries;
};
