#pragma once

#include <vector>

#include "conf/ConfRecords.h"
#include "fileman/load/ConfiguredDirs.h"

// Walks the modules and modes that the filter names, or that are there, and loads what they store.
class LoadPipeline {
public:
    LoadPipeline(StorageTree& tree, const ActiveFilter& filter, ConfiguredDirs& dirs, SpecialSources& special,
                 StartUpScan& scan)
        : m_tree(tree), m_filter(filter), m_dirs(dirs), m_special(special), m_scan(scan) {}

    using Modules = std::vector<const ModuleInfo*>;
    // The modules to visit: those that the filter names, else the current ones, else all. Throws
    // std::out_of_range when the configuration lacks one; that ends the request, which is intentional.
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
