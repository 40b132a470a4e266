#pragma once

#include <vector>

#include "conf/ConfRecords.h"
#include "fileman/load/ConfiguredDirs.h"

// Walks through the modules and modes that the filter names and loads their files. If it names none, the walk
// uses those that exist.
class LoadPipeline {
public:
    LoadPipeline(StorageTree& tree, const ActiveFilter& filter, ConfiguredDirs& dirs, SpecialSources& special,
                 StartUpScan& scan)
        : m_tree(tree), m_filter(filter), m_dirs(dirs), m_special(special), m_scan(scan) {}

    using Modules = std::vector<const ModuleInfo*>;
    // Returns the records of the filter's modules (ActiveFilter::modules). Throws std::out_of_range for a
    // module that the configuration lacks. This is intentional: it ends the request.
    Modules modules() const;

    void load(const Modules& modules);

private:
    bool isAccepted(const ModuleInfo& module, const ModeOptInfo& option);
    void loadMode(const ModuleInfo& module, const ModeOptInfo& option);

    StorageTree& m_tree;
    const ActiveFilter& m_filter;
    ConfiguredDirs& m_dirs;
    SpecialSources& m_special;
    StartUpScan& m_scan;
};
