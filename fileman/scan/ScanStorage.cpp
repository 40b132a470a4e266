#include <string_view>
#include <unordered_set>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/CFileManager.h"
#include "fileman/disk/StorageTree.h"
#include "fileman/load/LoadPass.h"

namespace {

using Names = std::list<std::string>;
using PortTypes = std::map<std::string, Names>;

constexpr int kResultSuffixLength = 7; // "-result"
constexpr int kSetupSuffixLength = 6;  // "-setup"

// Names are gathered as they come and then sorted out: a look at the list for each of 100,000 would take a
// minute.
void keepFirstOfEach(Names& list) {
    if (list.size() < 2)
        return;
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

// Hands the finished record of a module over.
void keep(const std::string& module, ScanModuleToModeInfo& scan) {
    keepFirstOfEach(scan);
    CFileManConf::addScanModuleInfo(module, scan);
}

Names& typesOf(ScanModuleToModeInfo& scan, bool isResult) {
    return isResult ? scan.rsltTypes : scan.profTypes;
}

PortTypes& portsOf(ScanModeToPortInfo& scan, bool isResult) {
    return isResult ? scan.rsltPorts : scan.profPorts;
}

// Adds the types of a port directory. The half's usual suffix length is cut whatever suffix a name really
// has: wanted, the filter pages of the instrument know the types so.
void scanPortDir(const Directory& portDir, bool isResult, Names& types) {
    for (const DirEntry entry : portDir) {
        const std::string name(entry.name);
        if (entry.type == EntryType::Directory && CFileManager::isValidTypeDirName(name))
            types.push_back(
                CFileManager::str2Type(name, isResult ? kResultSuffixLength : kSetupSuffixLength));
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
        if (entry.type != EntryType::Directory || !CFileManager::isValidPortDirName(name))
            continue;
        if (const Directory* const portDir = tree.openListed(entryPath(path, name)))
            visit(name, *portDir);
    }
}

bool hasFmonitorEntry(const Directory& directory) {
    for (const DirEntry entry : directory) {
        if (isFmonitorEntry(entry.name))
            return true;
    }
    return false;
}

void scanTree(StorageTree& tree, const std::string& path, const LoadInfo& info, Names& types,
              PortTypes& ports) {
    const Directory* const directory = tree.open(path);
    if (directory == nullptr)
        return;
    if (hasFmonitorEntry(*directory))
        types.push_back("fmonitor");
    const UniqueNames known = knownPorts(info);
    forEachPortDir(tree, path, [&](const std::string& name, const Directory& portDir) {
        const std::string port = CFileManager::str2Port(name, -1);
        // Two directories of one port share its entry.
        if (!isFmonitorEntry(name) && known.contains(port))
            scanPortDir(portDir, info.isResult != 0, ports[port]);
    });
}

// Notes an extra directory that exists: under its port, or with the module's types when it has none.
void noteExtraDir(const ExtraDirInfo& extra, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan) {
    if (extra.port.empty())
        typesOf(moduleScan, extra.isResult).push_back(extra.key);
    else
        portsOf(modeScan, extra.isResult)[extra.port].push_back(extra.key);
}

} // namespace

void CFileManager::scanSubDir(LoadInfo& info, ScanModuleToModeInfo& moduleScan,
                              ScanModeToPortInfo& modeScan) {
    gatherSubDir(info, moduleScan, modeScan);
    keepFirstOfEach(moduleScan);
    keepFirstOfEach(modeScan);
}

bool CFileManager::gatherSubDir(const LoadInfo& info, ScanModuleToModeInfo& moduleScan,
                                ScanModeToPortInfo& modeScan) {
    const bool isResult = info.isResult != 0;
    const std::string path = entryPath(m_home, info.dir);
    Names& types = typesOf(moduleScan, isResult);
    if (!m_tree->exists(path))
        return false;
    if (info.scanTree == 1) {
        scanTree(*m_tree, path, info, types, portsOf(modeScan, isResult));
    } else if (info.subDirs.empty()) {
        const std::string type = flatModeType(info.mode);
        if (!type.empty())
            types.push_back(type);
    } else {
        for (const std::string& name : info.subDirs) {
            if (m_tree->exists(entryPath(path, name)))
                types.push_back(fixedDirType(name));
        }
    }
    return true;
}

bool CFileManager::scanHalf(const LoadInfo& info, ScanModuleToModeInfo& moduleScan,
                            ScanModeToPortInfo& modeScan) {
    return !info.dir.empty() && gatherSubDir(info, moduleScan, modeScan);
}

bool CFileManager::scanMode(const ModuleInfo& module, const ModeOptInfo& option,
                            ScanModuleToModeInfo& moduleScan) {
    ScanModeToPortInfo modeScan;
    bool found = scanHalf(modePass(module.name, option, Half::Result), moduleScan, modeScan);
    if (isMtieMode(module.name, option.mode_name) && m_tree->exists(m_home + paths::kMtieDir)) {
        found = true;
        moduleScan.rsltTypes.push_back("mtie");
    }
    found |= scanHalf(modePass(module.name, option, Half::Profile), moduleScan, modeScan);
    for (const ExtraDirInfo* const extra : CFileManConf::getExtraDirs(module.name, option.mode_name)) {
        if (!m_tree->exists(entryPath(m_home, extra->dir_name)))
            continue;
        found = true;
        noteExtraDir(*extra, moduleScan, modeScan);
    }
    if (found)
        moduleScan.modes.emplace(option.mode_name, std::move(modeScan));
    return found;
}

void CFileManager::scanDir() {
    for (const auto& [name, module] : CFileManConf::getModulesInfo()) {
        ScanModuleToModeInfo moduleScan;
        bool found = false;
        for (const auto& [mode, option] : module.modeOpts)
            found |= scanMode(module, option, moduleScan);
        if (found)
            keep(name, moduleScan);
    }
    scanCommonDir();
}

void CFileManager::scanCommonDir() {
    ScanModuleToModeInfo moduleScan;
    ScanModeToPortInfo modeScan;
    bool found = false;
    for (const auto& [name, option] : CFileManConf::getCommonModuleInfo()) {
        const std::string path = entryPath(m_home, option.dir_name);
        if (!m_tree->exists(path))
            continue;
        found = true;
        const bool isResult = CCommUtils::isEquals(option.test_name, "Result");
        if (!isResult && !CCommUtils::isEquals(option.test_name, "Profile"))
            continue;
        typesOf(moduleScan, isResult).push_back(option.key);
        forEachPortDir(*m_tree, path, [&](const std::string& dirName, const Directory& portDir) {
            Names types;
            scanPortDir(portDir, isResult, types);
            // Of two directories of one port the first stays, unlike in the tree scan: wanted.
            portsOf(modeScan, isResult).emplace(str2Port(dirName, -1), std::move(types));
        });
    }
    if (!found)
        return;
    moduleScan.modes.emplace("Common", std::move(modeScan));
    keep("Common", moduleScan);
}

void CFileManager::scanOtu3In100geDir() {
    const Names ports{"otu3port"};
    ScanModuleToModeInfo moduleScan;
    ScanModeToPortInfo modeScan;
    bool found = scanHalf({"40GE", "OTU3", paths::kOtu3ResultDir, 1, ports, 1}, moduleScan, modeScan);
    found |= scanHalf({"40GE", "OTU3", paths::kOtu3ProfileDir, 1, ports, 0}, moduleScan, modeScan);
    if (!found)
        return;
    moduleScan.modes.emplace("OTU3", std::move(modeScan));
    keep("40GE", moduleScan);
}
