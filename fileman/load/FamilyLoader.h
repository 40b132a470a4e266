#pragma once

#include <string>

#include "common/UniqueNames.h"
#include "conf/ConfRecords.h"
#include "fileman/load/ActiveFilter.h"
#include "fileman/load/FamilyTable.h"
#include "fileman/load/FileLister.h"
#include "fileman/scan/StartUpScan.h"

// The loaders of one test family each, by the table of their differences. No request uses them; they are part
// of the store's interface. Each returns the number of records added.
class FamilyLoader {
public:
    FamilyLoader(StorageTree& tree, const ActiveFilter& filter, FileLister& files, StartUpScan& scan)
        : m_tree(tree), m_filter(filter), m_files(files), m_scan(scan) {}

    // A family that the table has.
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
    // The type directories in path; started has what their files have in common.
    int loadStrippedTypes(const std::string& path, const FileSource& started);
    // Lists the files of one type; started has everything else.
    int listType(FileSource started, const std::string& dir, const std::string& type);
    // To be called before passesKnown: what was found on disk may have changed.
    void indexKnownTypes();
    // Whether the filter names the type, or, when it names none, whether the type was found on disk.
    bool passesKnown(const std::string& typeKey) const;
    // Adds up what visit(name) returns for each directory in path.
    template<typename Visitor>
    int forEachDir(const std::string& path, Visitor&& visit);

    StorageTree& m_tree;
    const ActiveFilter& m_filter;
    FileLister& m_files;
    StartUpScan& m_scan;
    UniqueNames m_knownTypes;
};
