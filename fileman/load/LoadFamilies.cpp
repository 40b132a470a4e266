#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "fileman/CFileManager.h"
#include "fileman/disk/StorageTree.h"
#include "fileman/load/FamilyRules.h"

namespace {

// A port directory's label where the rule converts it, else its str2Port name.
std::string recordPort(const FamilyRule& rule, const std::string& dirName, const std::string& port) {
    if (rule.port == PortFrom::Dir || !CFileManager::isNeedConvertPortName(rule.family, dirName))
        return port;
    return rule.port == PortFrom::DirLabelOtux ? CFileManager::str2PortNameOtux(false, dirName, true)
                                               : CFileManager::str2PortName(rule.family, dirName, true);
}

std::string rootPort(const FamilyRule& rule, const std::string& root) {
    if (rule.port == PortFrom::RootOtux)
        return CFileManager::str2PortNameOtux(true, CCommUtils::isContains(root, "/p1/") ? "p1" : "p2", true);
    return CFileManager::str2PortName(rule.family, CCommUtils::dirName(root), true);
}

FileSource familySource(const std::string& dir, const std::string& mode, const std::string& port,
                        const std::string& type, bool isResult, Scratch scratch) {
    FileSource source;
    source.dir = dir;
    source.storedInfo = StoredInfo::Itself;
    source.scratch = scratch;
    source.record.mode = mode;
    source.record.test = CFileManConf::getTypeName(type);
    source.record.port = port;
    source.record.rsltype = resultWord(isResult);
    source.record.type = type;
    return source;
}

FileSource ruleSource(const FamilyRule& rule, const std::string& dir, const std::string& mode,
                      const std::string& port, const std::string& type) {
    FileSource source = familySource(dir, mode, port, type, rule.half == Half::Result, rule.scratch);
    // Captures among the Ethernet results are the one kind of their own.
    if (rule.family == TM_ETHERNET && rule.half == Half::Result && CCommUtils::isEquals(type, "pcap"))
        source.record.rsltype = "PCAP";
    return source;
}

template<typename Visitor>
int forEachDir(StorageTree& tree, const std::string& path, Visitor&& visit) {
    const Directory* const directory = tree.open(path);
    int count = 0;
    if (directory == nullptr)
        return 0;
    for (const DirEntry entry : *directory) {
        if (entry.type == EntryType::Directory)
            count += visit(std::string(entry.name));
    }
    return count;
}

} // namespace

bool CFileManager::passesKnown(const std::string& typeKey) const {
    if (!m_filter.tests.empty())
        return m_tests.contains(typeKey);
    return m_knownTypes.contains(typeKey);
}

void CFileManager::indexKnownTypes() {
    std::list<std::string> known;
    if (m_filter.tests.empty())
        CFileManConf::getCurrentTypeKeys(known);
    m_knownTypes = UniqueNames(known);
}

int CFileManager::loadFamily(TestMode family, Half half, const _ModeInfo& mode) {
    const FamilyRule& rule = *findFamilyRule(family, half);
    const std::string& dirName = half == Half::Result ? mode.rslt_dir_name : mode.prof_dir_name;
    if (rule.modeDir != ModeDir::None && dirName.empty())
        return 0;
    std::list<std::string> roots;
    if (rule.types == Types::Known)
        indexKnownTypes();
    get1stLevelDirNames(roots, family, half == Half::Result);
    int count = 0;
    for (const std::string& root : roots)
        count += loadFamilyRoot(rule, rule.modeDir == ModeDir::Append ? entryPath(root, dirName) : root,
                                mode.name);
    return count;
}

int CFileManager::loadFamilyRoot(const FamilyRule& rule, const std::string& path, const std::string& mode) {
    switch (rule.port) {
    case PortFrom::Dir:
    case PortFrom::DirLabel:
    case PortFrom::DirLabelOtux:
        return loadFamilyPorts(rule, path, mode);
    case PortFrom::Root:
    case PortFrom::RootOtux: {
        const std::string port = rootPort(rule, path);
        return passesPorts(port) ? loadFamilyTypes(rule, path, mode, port) : 0;
    }
    case PortFrom::None:
        break;
    }
    return loadFamilyTypes(rule, path, mode, "");
}

int CFileManager::loadFamilyPorts(const FamilyRule& rule, const std::string& path, const std::string& mode) {
    return forEachDir(*m_tree, path, [&](const std::string& name) {
        const std::string port = str2Port(name, -1);
        if (!isValidPortDirName(name) || !passesPorts(port))
            return 0;
        return loadFamilyTypes(rule, entryPath(path, name), mode, recordPort(rule, name, port));
    });
}

int CFileManager::loadFamilyTypes(const FamilyRule& rule, const std::string& path, const std::string& mode,
                                  const std::string& port) {
    const auto listed = [&](const std::string& key) {
        return rule.types == Types::Known ? passesKnown(key) : passesTests(key);
    };
    if (rule.typeKeys == nullptr)
        return listed("bert") ? listFiles(ruleSource(rule, path, mode, port, "bert")) : 0;
    return forEachDir(*m_tree, path, [&](const std::string& name) {
        const std::optional<TypeKeys> keys = rule.typeKeys(name);
        if (!keys || !listed(keys->filter))
            return 0;
        return listFiles(ruleSource(rule, entryPath(path, name), mode, port, keys->record));
    });
}

int CFileManager::loadStrippedTypes(const std::string& path, const std::string& mode, const std::string& port,
                                    Scratch scratch) {
    return forEachDir(*m_tree, path, [&](const std::string& name) {
        const std::string type = str2Type(name, -1);
        if (!isValidTypeDirName(name) || !passesTests(type))
            return 0;
        return listFiles(familySource(entryPath(path, name), mode, port, type, true, scratch));
    });
}

// Type directories without a port level beside port directories.
int CFileManager::loadCommonResult(const _ModeInfo& mode) {
    if (mode.rslt_dir_name.empty())
        return 0;
    std::list<std::string> roots;
    get1stLevelDirNames(roots, TM_COMMON, true);
    int count = 0;
    for (const std::string& root : roots) {
        const std::string path = entryPath(root, mode.rslt_dir_name);
        count += forEachDir(*m_tree, path, [&](const std::string& name) {
            const std::string dir = entryPath(path, name);
            if (name == "opm" || name == "fiberscope" || name == "odm" || name == "wsa")
                return passesTests(name)
                           ? listFiles(familySource(dir, mode.name, "", name, true, Scratch::Keep))
                           : 0;
            const std::string port = str2Port(name, -1);
            return isValidPortDirName(name) && passesPorts(port)
                       ? loadStrippedTypes(dir, mode.name, port, Scratch::Keep)
                       : 0;
        });
    }
    return count;
}

// Directories of bit-error tests, which are ports by their own name, beside port directories.
int CFileManager::loadODU0Result(const _ModeInfo& mode) {
    std::list<std::string> roots;
    indexKnownTypes();
    get1stLevelDirNames(roots, TM_ODU0, true);
    int count = 0;
    for (const std::string& root : roots) {
        count += forEachDir(*m_tree, root, [&](const std::string& name) {
            const std::string dir = entryPath(root, name);
            const bool first = CCommUtils::isContains(name, "odu0p1-bert");
            if (first || CCommUtils::isContains(name, "odu0p2-bert")) {
                const std::string port = str2PortNameOtux(true, first ? "p1" : "p2", true);
                return passesPorts(port) && passesKnown("bert")
                           ? listFiles(familySource(dir, mode.name, port, "bert", true, Scratch::Keep))
                           : 0;
            }
            const std::string port = str2Port(name, -1);
            if (!isValidPortDirName(name) || !passesPorts(port))
                return 0;
            const bool labelled = isNeedConvertPortName(TM_ODU0, name);
            return loadStrippedTypes(dir, mode.name, labelled ? str2PortName(TM_ODU0, name, true) : port,
                                     Scratch::Drop);
        });
    }
    return count;
}

int CFileManager::loadEthernetResult(const _ModeInfo& mode) {
    return loadFamily(TM_ETHERNET, Half::Result, mode);
}

int CFileManager::loadEthernetProfile(const _ModeInfo& mode) {
    return loadFamily(TM_ETHERNET, Half::Profile, mode);
}

int CFileManager::loadFiberResult(const _ModeInfo& mode) {
    return loadFamily(TM_FIBER_CHANNEL, Half::Result, mode);
}

int CFileManager::loadFiberProfile(const _ModeInfo& mode) {
    return loadFamily(TM_FIBER_CHANNEL, Half::Profile, mode);
}

int CFileManager::loadSDHResult(const _ModeInfo& mode) {
    return loadFamily(TM_SDH, Half::Result, mode);
}

int CFileManager::loadSDHProfile(const _ModeInfo& mode) {
    return loadFamily(TM_SDH, Half::Profile, mode);
}

int CFileManager::loadCommonProfile(const _ModeInfo& mode) {
    return loadFamily(TM_COMMON, Half::Profile, mode);
}

int CFileManager::loadOTUXResult(const _ModeInfo& mode) {
    return loadFamily(TM_OTUX, Half::Result, mode);
}

int CFileManager::loadOTUXProfile(const _ModeInfo& mode) {
    return loadFamily(TM_OTUX, Half::Profile, mode);
}

int CFileManager::loadODU0Profile(const _ModeInfo& mode) {
    return loadFamily(TM_ODU0, Half::Profile, mode);
}

int CFileManager::loadCableResult(const _ModeInfo& mode) {
    return loadFamily(TM_CABLE, Half::Result, mode);
}

int CFileManager::loadCableProfile(const _ModeInfo& mode) {
    return loadFamily(TM_CABLE, Half::Profile, mode);
}

int CFileManager::loadCPRILayerResult(const _ModeInfo& mode) {
    return loadFamily(TM_CPRI, Half::Result, mode);
}

int CFileManager::loadCPRILayerProfile(const _ModeInfo& mode) {
    return loadFamily(TM_CPRI, Half::Profile, mode);
}
