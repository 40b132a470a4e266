#pragma once

#include <string>

#include "common/NameSet.h"
#include "conf/ConfRecords.h"
#include "fileman/library_only/FamilyTable.h"
#include "fileman/load/ActiveFilter.h"
#include "fileman/load/FileLister.h"
#include "fileman/scan/StartUpScan.h"

// The loaders of the test families, driven by a table of their differences. No request uses them: only tests
// call them, and they are part of the store's given interface. Each returns the number of records added.
class FamilyLoader {
public:
    FamilyLoader(StorageTree& tree, const ActiveFilter& filter, FileLister& files, StartUpScan& scan)
        : m_tree(tree), m_filter(filter), m_files(files), m_scan(scan) {}

    // For a family and half that the table contains.
    int load(TestMode family, Half half, const _ModeInfo& mode);
    int loadCommonResults(const _ModeInfo& mode);
    int loadOdu0Results(const _ModeInfo& mode);

private:
    int loadRoot(const FamilyRule& rule, const std::string& path, const std::string& mode);
    int loadPorts(const FamilyRule& rule, const std::string& path, const std::string& mode);
    int loadTypes(const FamilyRule& rule, const std::string& path, const std::string& mode,
                  const std::string& port);
    int loadCommonDir(const std::string& path, const std::string& name, const FileSource& started);
    int loadOdu0Dir(const std::string& path, const std::string& name, const FileSource& started);
    // Loads the type directories in path. started contains the common fields of their files.
    int loadStrippedTypes(const std::string& path, const FileSource& started);
    // Lists the files of one type. started contains all other fields.
    int listType(FileSource started, const std::string& dir, const std::string& type);
    // Reads which types were found on disk. Call it before passesKnown.
    void indexKnownTypes();
    // Whether the filter names the type. If it names no type: whether the type was found on disk.
    bool passesKnown(const std::string& typeKey) const;
    // Adds up what visit(name) returns for each directory in path.
    template<typename Visitor>
    int forEachDir(const std::string& path, Visitor&& visit);

    StorageTree& m_tree;
    const ActiveFilter& m_filter;
    FileLister& m_files;
    StartUpScan& m_scan;
    NameSet m_knownTypes;
};
