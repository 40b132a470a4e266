#pragma once

#include <string>

#include "conf/ConfRecords.h"
#include "conf/ScanRecords.h"
#include "fileman/LoadInfo.h"
#include "fileman/disk/StorageTree.h"

// Records which types and ports the disk holds for each configured module (CFileManConf::addScanModuleInfo).
class ModuleScan {
public:
    explicit ModuleScan(StorageTree& tree) : m_tree(tree) {}

    // All configured modules, the Common module at the end.
    void scanModules();
    void scanCommonModule();
    // The OTU3 ports of the 100G module, recorded as the mode "OTU3" of the module "40GE".
    void scanOtu3();

    // What one configured directory holds.
    void scanDirectory(const LoadInfo& info, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan);

private:
    // The same; a name may stand in a list several times.
    void gather(const LoadInfo& info, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan);
    // These return whether there is something on disk.
    bool scanMode(const ModuleInfo& module, const ModeOptInfo& option, ScanModuleToModeInfo& moduleScan);
    bool scanHalf(const LoadInfo& info, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan);
    void scanCommonOption(const CommonOptInfo& option, ScanModuleToModeInfo& moduleScan,
                          ScanModeToPortInfo& modeScan);

    StorageTree& m_tree;
};
