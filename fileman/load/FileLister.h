#pragma once

#include "fileman/disk/StorageTree.h"
#include "fileman/load/FileSource.h"
#include "fileman/load/LoadedList.h"
#include "fileman/load/StoredInfoFilter.h"

// The step that all sources share: adds the files of one directory to the loaded list if they pass the
// filter.
class FileLister {
public:
    FileLister(StorageTree& tree, const ActiveFilter& filter, LoadedList& loaded)
        : m_tree(tree), m_advanced(filter), m_loaded(loaded) {}

    // Returns the number of records added.
    int list(FileSource source);

    // For a source whose records are not files.
    StoredInfoFilter& advanced() { return m_advanced; }

    // During its lifetime the lister reads no dates. For callers that keep only few of the records.
    class DatesLater {
    public:
        explicit DatesLater(FileLister& lister) : m_lister(lister) { m_lister.m_readsDates = false; }
        DatesLater(const DatesLater&) = delete;
        DatesLater& operator=(const DatesLater&) = delete;
        ~DatesLater() { m_lister.m_readsDates = true; }

    private:
        FileLister& m_lister;
    };
    bool readsDates() const { return m_readsDates; }

private:
    bool passes(const FileSource& source, Directory& directory, std::string_view fileName);

    StorageTree& m_tree;
    StoredInfoFilter m_advanced;
    LoadedList& m_loaded;
    bool m_readsDates = true;
};
