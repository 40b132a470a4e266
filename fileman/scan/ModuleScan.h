#pragma once

#include <string>

#include "conf/ConfRecords.h"
#include "conf/ScanRecords.h"
#include "fileman/LoadInfo.h"
#include "fileman/disk/StorageTree.h"

// Records for each configured module which types and ports are on disk (CFileManConf::addScanModuleInfo).
class ModuleScan {
public:
    explicit ModuleScan(StorageTree& tree) : m_tree(tree) {}

    // Scans all configured modules; the module "Common" is the last.
    void scanModules();
    void scanCommonModule();
    // The OTU3 ports of the 100G module, recorded as the mode "OTU3" of the module "40GE".
    void scanOtu3();

    // Scans one configured directory and adds what it contains.
    void scanDirectory(const LoadInfo& info, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan);

private:
    // The same, but a list may contain a name several times.
    void gather(const LoadInfo& info, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan);
    // These return whether at least one of the directories exists.
    bool scanMode(const ModuleInfo& module, const ModeOptInfo& option, ScanModuleToModeInfo& moduleScan);
    bool scanHalf(const LoadInfo& info, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan);
    void scanCommonOption(const CommonOptInfo& option, ScanModuleToModeInfo& moduleScan,
                          ScanModeToPortInfo& modeScan);

    StorageTree& m_tree;
};
