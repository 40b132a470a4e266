#include "fileman/scan/ModuleScan.h"

#include <string_view>
#include <unordered_set>
#include <utility>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "common/NameSet.h"
#include "conf/CFileManConf.h"
#include "fileman/names/FlatModes.h"
#include "fileman/names/MtieMode.h"
#include "fileman/names/PortNames.h"
#include "fileman/names/Suffixes.h"
#include "fileman/names/TestTypeDirs.h"

namespace {

using Names = std::list<std::string>;
using PortTypes = std::map<std::string, Names>;

// Removes duplicates after all names were collected: a search in the list for each of 100,000 names would
// take a minute.
void keepFirstOfEach(Names& list) {
    std::unordered_set<std::string_view> seen;
    list.remove_if([&](const std::string& name) { return !seen.insert(name).second; });
}

void keepFirstOfEach(ScanModeToPortInfo& scan) {
    for (PortTypes* const ports : {&scan.rsltPorts, &scan.profPorts}) {
        for (auto& [port, types] : *ports)
            keepFirstOfEach(types);
    }
}

void keepFirstOfEach(ScanModuleToModeInfo& scan) {
    keepFirstOfEach(scan.rsltTypes);
    keepFirstOfEach(scan.profTypes);
    for (auto& [name, mode] : scan.modes)
        keepFirstOfEach(mode);
}

// Passes the finished record of a module to CFileManConf.
void record(const std::string& module, ScanModuleToModeInfo& scan) {
    keepFirstOfEach(scan);
    CFileManConf::addScanModuleInfo(module, scan);
}

Names& typesOf(ScanModuleToModeInfo& scan, bool isResult) {
    return isResult ? scan.rsltTypes : scan.profTypes;
}

PortTypes& portsOf(ScanModeToPortInfo& scan, bool isResult) {
    return isResult ? scan.rsltPorts : scan.profPorts;
}

// Adds the types of a port directory. Each name is cut by the length of the half's usual ending, even if it
// has another ending. This is intentional: the filter pages of the instrument use these names.
void scanPortDir(const Directory& portDir, bool isResult, Names& types) {
    for (const DirEntry entry : portDir) {
        const std::string name(entry.name);
        if (entry.type == EntryType::Directory && types::isTypeDir(name))
            types.push_back(suffix::cut(name, isResult ? suffix::kResult : suffix::kSetup));
    }
}

// Calls visit(name, directory) for each port directory in path.
template<typename Visitor>
void forEachPortDir(StorageTree& tree, const std::string& path, Visitor&& visit) {
    const Directory* const directory = tree.open(path);
    if (directory == nullptr)
        return;
    for (const DirEntry entry : *directory) {
        const std::string name(entry.name);
        if (entry.type != EntryType::Directory || !ports::isPortDir(name))
            continue;
        if (const Directory* const portDir = tree.openListed(entryPath(path, name)))
            visit(name, *portDir);
    }
}

bool hasFmonitorEntry(const Directory& directory) {
    for (const DirEntry entry : directory) {
        if (types::isFiberMonitor(entry.name))
            return true;
    }
    return false;
}

void scanTree(StorageTree& tree, const std::string& path, const LoadInfo& info, Names& types,
              PortTypes& found) {
    const Directory* const directory = tree.open(path);
    if (directory == nullptr)
        return;
    if (hasFmonitorEntry(*directory))
        types.emplace_back("fmonitor");
    const NameSet known(ports::fromDirNames(info.subDirs));
    forEachPortDir(tree, path, [&](const std::string& name, const Directory& portDir) {
        const std::string port = ports::fromDirName(name);
        // Two directories of the same port share one entry.
        if (!types::isFiberMonitor(name) && known.contains(port))
            scanPortDir(portDir, info.isResult != 0, found[port]);
    });
}

// Records an extra directory that exists: under its port, or among the types of the module if it has no port.
void noteExtraDir(const ExtraDirInfo& extra, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan) {
    if (extra.port.empty())
        typesOf(moduleScan, extra.isResult).push_back(extra.key);
    else
        portsOf(modeScan, extra.isResult)[extra.port].push_back(extra.key);
}

} // namespace

void ModuleScan::scanDirectory(const LoadInfo& info, ScanModuleToModeInfo& moduleScan,
                               ScanModeToPortInfo& modeScan) {
    gather(info, moduleScan, modeScan);
    keepFirstOfEach(moduleScan);
    keepFirstOfEach(modeScan);
}

void ModuleScan::gather(const LoadInfo& info, ScanModuleToModeInfo& moduleScan,
                        ScanModeToPortInfo& modeScan) {
    const bool isResult = info.isResult != 0;
    const std::string path = entryPath(paths::kHome, info.dir);
    Names& types = typesOf(moduleScan, isResult);
    if (!m_tree.exists(path))
        return;
    if (info.scanTree == 1) {
        scanTree(m_tree, path, info, types, portsOf(modeScan, isResult));
    } else if (info.subDirs.empty()) {
        const std::string type = typeOfFlatMode(info.mode);
        if (!type.empty())
            types.push_back(type);
    } else {
        for (const std::string& name : info.subDirs) {
            if (m_tree.exists(entryPath(path, name)))
                types.push_back(types::fromConfiguredDir(name));
        }
    }
}

bool ModuleScan::scanHalf(const LoadInfo& info, ScanModuleToModeInfo& moduleScan,
                          ScanModeToPortInfo& modeScan) {
    if (info.dir.empty() || !m_tree.exists(entryPath(paths::kHome, info.dir)))
        return false;
    gather(info, moduleScan, modeScan);
    return true;
}

bool ModuleScan::scanMode(const ModuleInfo& module, const ModeOptInfo& option,
                          ScanModuleToModeInfo& moduleScan) {
    ScanModeToPortInfo modeScan;
    bool found = scanHalf(loadInfoOf(module.name, option, Half::Result), moduleScan, modeScan);
    if (isMtieMode(module.name, option.mode_name) && m_tree.exists(paths::kMtieDir)) {
        found = true;
        moduleScan.rsltTypes.emplace_back("mtie");
    }
    found |= scanHalf(loadInfoOf(module.name, option, Half::Profile), moduleScan, modeScan);
    for (const ExtraDirInfo* const extra : CFileManConf::getExtraDirs(module.name, option.mode_name)) {
        if (!m_tree.exists(entryPath(paths::kHome, extra->dir_name)))
            continue;
        found = true;
        noteExtraDir(*extra, moduleScan, modeScan);
    }
    if (found)
        moduleScan.modes.emplace(option.mode_name, std::move(modeScan));
    return found;
}

void ModuleScan::scanModules() {
    for (const auto& [name, module] : CFileManConf::getModulesInfo()) {
        ScanModuleToModeInfo moduleScan;
        bool found = false;
        for (const auto& [mode, option] : module.modeOpts)
            found |= scanMode(module, option, moduleScan);
        if (found)
            record(name, moduleScan);
    }
    scanCommonModule();
}

void ModuleScan::scanCommonModule() {
    ScanModuleToModeInfo moduleScan;
    ScanModeToPortInfo modeScan;
    bool found = false;
    for (const auto& [name, option] : CFileManConf::getCommonModuleInfo()) {
        if (!m_tree.exists(entryPath(paths::kHome, option.dir_name)))
            continue;
        found = true;
        scanCommonOption(option, moduleScan, modeScan);
    }
    if (!found)
        return;
    moduleScan.modes.emplace("Common", std::move(modeScan));
    record("Common", moduleScan);
}

void ModuleScan::scanCommonOption(const CommonOptInfo& option, ScanModuleToModeInfo& moduleScan,
                                  ScanModeToPortInfo& modeScan) {
    const bool isResult = CCommUtils::isEquals(option.test_name, "Result");
    if (!isResult && !CCommUtils::isEquals(option.test_name, "Profile"))
        return;
    typesOf(moduleScan, isResult).push_back(option.key);
    forEachPortDir(m_tree, entryPath(paths::kHome, option.dir_name),
                   [&](const std::string& dirName, const Directory& portDir) {
                       Names types;
                       scanPortDir(portDir, isResult, types);
                       // If two directories have the same port, the first one stays, unlike in the tree scan.
                       // This is intentional.
                       portsOf(modeScan, isResult).emplace(ports::fromDirName(dirName), std::move(types));
                   });
}

void ModuleScan::scanOtu3() {
    const Names portDirs{"otu3port"};
    ScanModuleToModeInfo moduleScan;
    ScanModeToPortInfo modeScan;
    bool found = scanHalf(portTreeInfo("40GE", "OTU3", paths::kOtu3ResultsBelowHome, portDirs, Half::Result),
                          moduleScan, modeScan);
    found |= scanHalf(portTreeInfo("40GE", "OTU3", paths::kOtu3ProfilesBelowHome, portDirs, Half::Profile),
                      moduleScan, modeScan);
    if (!found)
        return;
    moduleScan.modes.emplace("OTU3", std::move(modeScan));
    record("40GE", moduleScan);
}
