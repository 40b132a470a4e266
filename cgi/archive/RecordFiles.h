#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fileman/ResultInfo.h"
#include "fileman/disk/Directory.h"

// Returns true if an entry of a directory belongs to the record with this name: its page and data (NAME.*), a
// file or directory NAME, or the directory NAME_files with the pictures of the page.
bool belongsToRecord(std::string_view name, std::string_view entry);

// An open directory with its entries sorted in byte order. So the files of a record are found by a binary
// search.
class SortedDirectory {
public:
    // The most directories of a record that may lie in each other. Each of them keeps a descriptor open, and
    // a process may usually have 1,024 of them.
    static constexpr int kDeepest = 200;

    // path is used in messages and to resolve links in the directory. If directory is not open, errno must
    // hold the reason. If it could not be opened or could not be read to its end, there are no entries.
    SortedDirectory(UniqueFd directory, const std::string& path);

    bool isRead() const { return m_isRead; }
    // Returns the errno value if the directory could not be opened, else 0.
    int openError() const { return m_openError; }
    int descriptor() const { return m_opened.descriptor.get(); }
    const std::string& path() const { return m_path; }

    const std::vector<DirEntry>& entries() const { return m_entries; }
    // Returns the entries of a record in this directory. If the name of a file begins with a dot, its record
    // has an empty name, and every such file would belong to it. So only that file is returned.
    std::vector<DirEntry> entriesOf(const _ResultInfo& record) const;

private:
    std::string m_path;
    int m_openError;
    OpenedDirectory m_opened;
    bool m_isRead;
    std::vector<DirEntry> m_entries;
};
