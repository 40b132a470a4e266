#include <algorithm>

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "fileman/CFileManager.h"
#include "fileman/disk/StorageTree.h"

namespace {

bool equals(const std::string& name, const char* word) {
    return CCommUtils::isEquals(name, word);
}

bool startsWith(const std::string& name, const char* prefix) {
    return CCommUtils::isStartsWith(name, prefix);
}

bool endsWith(const std::string& name, const char* suffix) {
    return CCommUtils::isEndsWith(name, suffix);
}

bool contains(const std::string& name, const char* part) {
    return CCommUtils::isContains(name, part);
}

void addType(const std::string& key) {
    CFileManConf::addCurrentType(CFileManConf::getTypeName(key));
}

void addMode(const std::string& key) {
    CFileManConf::addCurrentMode(CFileManConf::getModeName(key));
}

void addTypeToMode(const std::string& typeKey, const std::string& modeKey) {
    CFileManConf::addTypeToMode(CFileManConf::getTypeName(typeKey), CFileManConf::getModeName(modeKey));
}

// Directories of the SDH family that lie below a port without a mode directory of their own.
bool isSdhDir(const std::string& name, const std::string& path) {
    static constexpr const char* kPrefixes[] = {"ktp-", "sdh10g-", "sdh2g5-"};
    static constexpr const char* kNames[] = {"bert", "isdn", "jit", "jtf", "mjt", "pulse", "wan"};
    if (!contains(path, "10g") && !contains(path, "2g5"))
        return false;
    return std::any_of(std::begin(kPrefixes), std::end(kPrefixes),
                       [&](const char* prefix) { return startsWith(name, prefix); }) ||
           std::any_of(std::begin(kNames), std::end(kNames),
                       [&](const char* word) { return equals(name, word); });
}

// The test results of a CPRI layer, which lie beside the modes of their module; null for other names.
const char* cpriLayerOf(const std::string& name) {
    for (const char* const layer : {"cpril1", "cpril2"}) {
        if (startsWith(name, ("2g5-" + std::string(layer)).c_str()))
            return layer;
    }
    return nullptr;
}

bool isSuffixedDir(const std::string& name) {
    return endsWith(name, "-rslt") || endsWith(name, "-prof");
}

// The configured directory name of the mode for which a directory stands; "" when it stands for none.
std::string modeKeyOf(const std::string& name, const std::string& path) {
    if (isSdhDir(name, path))
        return "ktp-rslt";
    if (equals(name, "ktr") || equals(name, "otux") || equals(name, "cpri"))
        return name;
    if (startsWith(name, "odu0"))
        return endsWith(name, "bert") ? std::string() : name;
    if (isSuffixedDir(name))
        return cpriLayerOf(name) == nullptr ? name : std::string();
    return name == "screen" ? "ktb-rslt" : std::string();
}

std::string sdhTypeKey(const std::string& name) {
    for (const char* const word : {"bert", "isdn"}) {
        if (equals(name, word))
            return word;
    }
    for (const char* const part : {"ds1", "ds3", "sonet"}) {
        if (contains(name, part))
            return part;
    }
    for (const char* const word : {"jit", "jtf", "mjt", "pulse", "wan"}) {
        if (equals(name, word))
            return word;
    }
    return "bert";
}

void addPort(const std::string& name, std::size_t suffixLength, const char* portOf10g) {
    const std::string key = name.substr(0, name.size() - suffixLength);
    CFileManConf::addCurrentPort(startsWith(name, "10g") ? portOf10g : CFileManConf::getPortName(key));
}

// The port that a directory of this name stands for as a whole.
void addPortOf(const std::string& name) {
    if (equals(name, "p1"))
        CFileManConf::addCurrentPort("P1");
    else if (equals(name, "p2"))
        CFileManConf::addCurrentPort("P2");
}

void registerPortDir(const std::string& name) {
    if (endsWith(name, "port"))
        addPort(name, 4, "10G P1");
    else if (endsWith(name, "port2"))
        addPort(name, 5, "10G P2");
    else
        addPortOf(name);
}

// The companions of reports hold pictures only, and "usbd" is a foreign medium.
bool isScannedName(const std::string& name) {
    return name != "usbd" && !endsWith(name, "_files");
}

} // namespace

void CFileManager::scanFilters() {
    CFileManConf::finishScan();
    forgetDisk();
    CFileManConf::readConf(CFileManConf::getConfFileName());
    // Only a list without a mode filter and the filter pages look at what the scans find.
    CFileManConf::putOffScan([this] {
        scanDir();
        scanResultFilters(m_home);
    });
}

// Each directory on the way to path counts, as the scan comes by all of them.
bool CFileManager::showsMode(const std::string& path, const std::string& mode) {
    if (!CFileManConf::isScanPutOff() || !m_tree->isListedDirectory(path))
        return false;
    for (std::size_t end = m_home.size(); end != std::string::npos;) {
        end = path.find('/', end + 1);
        const std::string place = path.substr(0, end);
        const std::string name = CCommUtils::dirName(place);
        if (!isScannedName(name))
            return false;
        const std::string key = modeKeyOf(name, place);
        if (!key.empty() && CFileManConf::getModeName(key) == mode)
            return true;
    }
    return false;
}

// The scan comes by that directory and registers the name of its type.
bool CFileManager::showsScreenType(const std::string& path) {
    std::list<std::string> keys;
    if (CFileManConf::isScanPutOff() && m_tree->isListedDirectory(path))
        CFileManConf::getTypeKeys(keys, CFileManConf::getTypeName("screen"));
    return CCommUtils::isContains(keys, "screen");
}

void CFileManager::scanResultFilters(const std::string& path) {
    // Called by hand, it comes after the scan that was put off, and must not be interrupted by it.
    CFileManConf::finishScan();
    registerDirectory(path);
    const Directory* const directory = m_tree->openListed(path);
    if (directory == nullptr)
        return;
    for (const DirEntry entry : *directory) {
        if (entry.type == EntryType::Directory && isScannedName(std::string(entry.name)))
            scanResultFilters(entryPath(path, entry.name));
    }
}

// What a directory stands for follows from its name, its parent's, and for the SDH family its path.
void CFileManager::registerDirectory(const std::string& path) {
    const std::string name = CCommUtils::dirName(path);
    const std::string parent = CCommUtils::upDirName(path);
    const std::string mode = modeKeyOf(name, path);
    if (isSdhDir(name, path))
        return registerSdhDir(name, parent, mode);
    if (registerModeDir(name, parent, mode))
        return;
    if (isSuffixedDir(name))
        registerSuffixedModeDir(name, mode);
    else
        registerTypeOrPortDir(name, mode);
}

void CFileManager::registerSdhDir(const std::string& name, const std::string& parent,
                                  const std::string& mode) {
    typePrefixFlag = false;
    addMode(mode);
    addPortOf(parent);
    const std::string key = sdhTypeKey(name);
    addType(key);
    addTypeToMode(key, mode);
}

// Mode directories that are known by their whole name or its start; false for every other name.
bool CFileManager::registerModeDir(const std::string& name, const std::string& parent,
                                   const std::string& mode) {
    if (equals(name, "ktr")) {
        typePrefixFlag = false;
        addMode(mode);
    } else if (equals(name, "otux")) {
        addPortOf(parent);
        addType("bert");
        addMode(mode);
        addTypeToMode("bert", mode);
    } else if (startsWith(name, "odu0") && endsWith(name, "bert")) {
        addType("bert");
        addTypeToMode("bert", name);
        if (contains(name, "p1"))
            CFileManConf::addCurrentPort("P1");
        else if (contains(name, "p2"))
            CFileManConf::addCurrentPort("P2");
    } else if (startsWith(name, "odu0") || equals(name, "cpri")) {
        addMode(mode);
    } else {
        return false;
    }
    return true;
}

void CFileManager::registerSuffixedModeDir(const std::string& name, const std::string& mode) {
    if (const char* const layer = cpriLayerOf(name)) {
        addType(layer);
        addTypeToMode(layer, "cpri");
        return;
    }
    // Stays as it is for everything scanned from here on, later siblings included, until another rule sets
    // it.
    typePrefixFlag = startsWith(name, "kts-");
    addMode(mode);
}

void CFileManager::registerTypeOrPortDir(const std::string& name, const std::string& mode) {
    for (const std::string suffix : {"-result", "-setup"}) {
        if (CCommUtils::isEndsWith(name, suffix)) {
            const std::string key = name.substr(0, name.size() - suffix.size());
            return addType(typePrefixFlag && !key.empty() ? key.substr(1) : key);
        }
    }
    // The whole name, unlike the other suffixes: wanted.
    if (endsWith(name, "-trace"))
        return addType(name);
    if (endsWith(name, "-mpeg"))
        return addType(name.substr(0, name.size() - 5));
    if (!CCommUtils::isContains(m_specialTypes, name))
        return registerPortDir(name);
    if (!mode.empty()) {
        addMode(mode);
        addTypeToMode(name, mode);
    }
    addType(name);
}
