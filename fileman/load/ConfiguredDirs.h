#pragma once

#include <string>

#include "conf/ConfRecords.h"
#include "fileman/LoadInfo.h"
#include "fileman/load/ActiveFilter.h"
#include "fileman/load/FileLister.h"
#include "fileman/load/SpecialSources.h"

// Loads the directories that the configuration names. They have three shapes: files, fixed type directories,
// or a tree of port and type directories. Each load returns the number of records added.
class ConfiguredDirs {
public:
    ConfiguredDirs(StorageTree& tree, const ActiveFilter& filter, FileLister& files, SpecialSources& special)
        : m_tree(tree), m_filter(filter), m_files(files), m_special(special) {}

    int load(const LoadInfo& info);
    // Loads all options of the module "Common". Each option with port directories prints its number of
    // records.
    int loadCommonModule();

private:
    int loadFlat(const LoadInfo& info);
    int loadFixedDirs(const LoadInfo& info);
    int loadTree(const LoadInfo& info);
    int loadPortDir(const LoadInfo& info, const std::string& path, const std::string& port);
    int loadCommonTree(const CommonOptInfo& option);
    int loadCommonFlat(const CommonOptInfo& option);

    StorageTree& m_tree;
    const ActiveFilter& m_filter;
    FileLister& m_files;
    SpecialSources& m_special;
};
