#include <algorithm>
#include <cstdio>
#include <utility>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/CFileManager.h"
#include "fileman/disk/StorageTree.h"
#include "fileman/load/FileStep.h"
#include "fileman/load/LoadPass.h"
#include "fileman/load/LoadedList.h"

namespace {

using Names = std::list<std::string>;

// What the filter names; else what was found on disk; else everything configured.
Names wantedModules(const Names& filter) {
    Names names = filter;
    if (names.empty())
        CFileManConf::getCurrentModule(names);
    if (names.empty())
        CFileManConf::getAllModuleNames(names);
    return names;
}

// A flag that is false as long as this lives.
class Unset {
public:
    explicit Unset(bool& flag) : m_flag(flag), m_before(std::exchange(flag, false)) {}
    Unset(const Unset&) = delete;
    Unset& operator=(const Unset&) = delete;
    ~Unset() { m_flag = m_before; }

private:
    bool& m_flag;
    bool m_before;
};

// The directories that may hold something of a mode.
Names sourceDirs(const std::string& home, const ModuleInfo& module, const ModeOptInfo& option) {
    Names dirs;
    for (const std::string& dir : {option.rslt_dir_name, option.prof_dir_name}) {
        if (!dir.empty())
            dirs.push_back(entryPath(home, dir));
    }
    if (isMtieMode(module.name, option.mode_name))
        dirs.push_back(home + paths::kMtieDir);
    for (const ExtraDirInfo* const extra : CFileManConf::getExtraDirs(module.name, option.mode_name))
        dirs.push_back(entryPath(home, extra->dir_name));
    return dirs;
}

} // namespace

bool CFileManager::passesTests(const std::string& type) const {
    return m_tests.empty() || m_tests.contains(type);
}

bool CFileManager::passesPorts(const std::string& port) const {
    return m_ports.empty() || m_ports.contains(port);
}

void CFileManager::selectEverything(bool results, bool profiles) {
    m_filter.modes.clear();
    m_filter.tests.clear();
    m_filter.ports.clear();
    CFileManConf::getAllModeNames(m_filter.modes);
    CFileManConf::getAllTypeKeys(m_filter.tests);
    CFileManConf::getAllPortNames(m_filter.ports);
    m_filter.includeResults = results;
    m_filter.includeProfiles = profiles;
    m_filter.advanceInfo = _AdvanceInfo();
    indexFilter();
}

void CFileManager::loadAll(std::list<_ResultInfo*>& out) {
    selectEverything(true, true);
    loadResults(out);
}

void CFileManager::loadChosen(std::list<_ResultInfo*>& out,
                              const std::function<bool(const std::string& id)>& isChosen) {
    selectEverything(true, true);
    {
        // Those that are missing when a record is made are asked for then.
        const Unset noDates(m_readsDates);
        reloadResult();
    }
    m_loaded->keepOnly(isChosen);
    getLoadedResults(out);
}

void CFileManager::loadAllResults() {
    selectEverything(true, false);
    reloadResult();
}

void CFileManager::loadAllResults(std::list<_ResultInfo*>& out) {
    loadAllResults();
    getLoadedResults(out);
}

void CFileManager::loadAllProfiles(std::list<_ResultInfo*>& out) {
    selectEverything(false, true);
    loadResults(out);
}

void CFileManager::loadResults(std::list<_ResultInfo*>& out) {
    reloadResult();
    getLoadedResults(out);
}

// The filter's flags say what is loaded, here as in loadResults.
void CFileManager::loadProfiles(std::list<_ResultInfo*>& out) {
    loadResults(out);
}

void CFileManager::loadScreenShots(std::list<_ResultInfo*>& out) {
    loadScreenShot();
    getLoadedResults(out);
}

void CFileManager::reloadResult() {
    const DateReader::Session session(m_dates);
    clearLoaded();
    for (const std::string& name : wantedModules(m_filter.modules)) {
        const ModuleInfo& module = CFileManConf::getModuleInfo(name);
        if (CCommUtils::isEquals(module.name, "Common")) {
            loadCommonResult();
            continue;
        }
        for (const auto& [mode, option] : module.modeOpts) {
            if (isWantedMode(module, option))
                loadMode(module, option);
        }
    }
}

bool CFileManager::isWantedMode(const ModuleInfo& module, const ModeOptInfo& option) {
    if (!m_modes.empty())
        return m_modes.contains(option.mode_name);
    Names sources = sourceDirs(m_home, module, option);
    sources.remove_if([this](const std::string& path) { return !m_tree->exists(path); });
    if (sources.empty())
        return false;
    // A mode's directory tells the mode as a rule, and the vocabulary need not be collected for it.
    if (std::any_of(sources.begin(), sources.end(),
                    [&](const std::string& path) { return showsMode(path, option.mode_name); }))
        return true;
    return CFileManConf::isCurrentMode(option.mode_name);
}

void CFileManager::loadMode(const ModuleInfo& module, const ModeOptInfo& option) {
    if (m_filter.includeResults) {
        LoadInfo results = modePass(module.name, option, Half::Result);
        loadResult(results);
        if (isMtieMode(module.name, option.mode_name))
            loadMtieResult();
    }
    if (m_filter.includeProfiles) {
        LoadInfo profiles = modePass(module.name, option, Half::Profile);
        loadResult(profiles);
    }
    for (const ExtraDirInfo* const extra : CFileManConf::getExtraDirs(module.name, option.mode_name))
        loadExtraDir(*extra);
}

int CFileManager::loadCommonResult() {
    int count = 0;
    for (const auto& [name, option] : CFileManConf::getCommonModuleInfo()) {
        if (!m_tree->exists(entryPath(m_home, option.dir_name)))
            continue;
        count += option.under_port_dir ? loadCommonByPort(option) : loadCommonFlat(option);
    }
    return count;
}

int CFileManager::loadCommonByPort(const CommonOptInfo& option) {
    const bool isResult = CCommUtils::isEquals(option.test_name, "Result") && m_filter.includeResults;
    if (!isResult && !(CCommUtils::isEquals(option.test_name, "Profile") && m_filter.includeProfiles))
        return 0;
    LoadInfo info{"Common", "", option.dir_name, 1, option.list, isResult ? 1 : 0};
    const int count = loadResult(info);
    // Wanted: the line stands in the response, before its header.
    std::printf(isResult ? "Common port result: %d.\n" : "Common profile: %d.\n", count);
    return count;
}

int CFileManager::loadCommonFlat(const CommonOptInfo& option) {
    if (!m_filter.includeResults || !passesTests(option.key))
        return 0;
    FileSource source;
    source.dir = entryPath(m_home, option.dir_name);
    source.storedInfo = StoredInfo::Companion;
    source.record.module = "Common";
    source.record.test = option.test_name;
    source.record.rsltype = resultWord(true);
    source.record.type = option.key;
    return listFiles(source);
}

int CFileManager::loadResult(LoadInfo& info) {
    if (info.dir.empty())
        return 0;
    if (info.scanTree == 1)
        return loadTree(info);
    return info.subDirs.empty() ? loadFlat(info) : loadFixedDirs(info);
}

int CFileManager::loadFlat(const LoadInfo& info) {
    const std::string type = flatModeType(info.mode);
    return type.empty() ? 0 : loadTypeDir(info, entryPath(m_home, info.dir), false, "", type);
}

int CFileManager::loadFixedDirs(const LoadInfo& info) {
    const std::string path = entryPath(m_home, info.dir);
    int count = 0;
    for (const std::string& name : info.subDirs)
        count += loadTypeDir(info, entryPath(path, name), false, "", fixedDirType(name));
    return count;
}

int CFileManager::loadTree(const LoadInfo& info) {
    const std::string path = entryPath(m_home, info.dir);
    const Directory* const directory = m_tree->open(path);
    if (directory == nullptr)
        return 0;
    const UniqueNames ports = knownPorts(info);
    int count = 0;
    for (const DirEntry entry : *directory) {
        const std::string name(entry.name);
        // Once for each such entry, of whatever type: wanted.
        if (isFmonitorEntry(name)) {
            count += loadFmonitorResult(info);
            continue;
        }
        if (entry.type != EntryType::Directory || !isValidPortDirName(name))
            continue;
        const std::string port = str2Port(name, -1);
        if (passesPorts(port) && ports.contains(port))
            count += loadPortDir(info, entryPath(path, name), port);
    }
    return count;
}

int CFileManager::loadPortDir(const LoadInfo& info, const std::string& path, const std::string& port) {
    const Directory* const directory = m_tree->openListed(path);
    if (directory == nullptr)
        return 0;
    int count = 0;
    for (const DirEntry entry : *directory) {
        const std::string name(entry.name);
        if (entry.type == EntryType::Directory && isValidTypeDirName(name))
            count += loadTypeDir(info, entryPath(path, name), true, port, str2Type(name, -1));
    }
    return count;
}

int CFileManager::loadTypeDir(const LoadInfo& info, const std::string& path, bool isListed,
                              const std::string& port, const std::string& type) {
    if (!passesTests(type))
        return 0;
    FileSource source;
    source.dir = path;
    source.isListed = isListed;
    source.record.module = info.module;
    source.record.mode = info.mode;
    source.record.test = CFileManConf::getTypeName(type);
    source.record.port = port;
    source.record.rsltype = resultWord(info.isResult != 0);
    source.record.type = type;
    return listFiles(std::move(source));
}
