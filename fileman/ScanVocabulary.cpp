#include <algorithm>

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "fileman/CFileManager.h"
#include "fileman/StorageTree.h"

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

void registerPortDir(const std::string& name) {
    if (endsWith(name, "port"))
        addPort(name, 4, "10G P1");
    else if (endsWith(name, "port2"))
        addPort(name, 5, "10G P2");
    else if (equals(name, "p1"))
        CFileManConf::addCurrentPort("P1");
    else if (equals(name, "p2"))
        CFileManConf::addCurrentPort("P2");
}

bool isScanned(const DirEntry& entry) {
    if (entry.type != EntryType::Directory)
        return false;
    // The companions of reports hold pictures only, and "usbd" is a foreign medium.
    return entry.name != "usbd" && !endsWith(std::string(entry.name), "_files");
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

void CFileManager::scanResultFilters(const std::string& path) {
    // Called by hand, it comes after the scan that was put off, and must not be interrupted by it.
    CFileManConf::finishScan();
    registerDirectory(path);
    const Directory* const directory = m_tree->openListed(path);
    if (directory == nullptr)
        return;
    for (const DirEntry entry : *directory) {
        if (isScanned(entry))
            scanResultFilters(entryPath(path, entry.name));
    }
}

// What a directory stands for follows from its name, its parent's, and for the SDH family its path.
void CFileManager::registerDirectory(const std::string& path) {
    const std::string name = CCommUtils::dirName(path);
    const std::string parent = CCommUtils::upDirName(path);
    if (isSdhDir(name, path))
        return registerSdhDir(name, parent);
    if (registerModeDir(name, parent))
        return;
    if (endsWith(name, "-rslt") || endsWith(name, "-prof"))
        registerSuffixedModeDir(name);
    else
        registerTypeOrPortDir(name);
}

void CFileManager::registerSdhDir(const std::string& name, const std::string& parent) {
    typePrefixFlag = false;
    addMode("ktp-rslt");
    if (equals(parent, "p1"))
        CFileManConf::addCurrentPort("P1");
    else if (equals(parent, "p2"))
        CFileManConf::addCurrentPort("P2");
    const std::string key = sdhTypeKey(name);
    addType(key);
    addTypeToMode(key, "ktp-rslt");
}

// Mode directories that are known by their whole name or its start; false for every other name.
bool CFileManager::registerModeDir(const std::string& name, const std::string& parent) {
    if (equals(name, "ktr")) {
        typePrefixFlag = false;
        addMode(name);
    } else if (equals(name, "otux")) {
        if (equals(parent, "p1"))
            CFileManConf::addCurrentPort("P1");
        else if (equals(parent, "p2"))
            CFileManConf::addCurrentPort("P2");
        addType("bert");
        addMode(name);
        addTypeToMode("bert", name);
    } else if (startsWith(name, "odu0") && endsWith(name, "bert")) {
        addType("bert");
        addTypeToMode("bert", name);
        if (contains(name, "p1"))
            CFileManConf::addCurrentPort("P1");
        else if (contains(name, "p2"))
            CFileManConf::addCurrentPort("P2");
    } else if (startsWith(name, "odu0") || equals(name, "cpri")) {
        addMode(name);
    } else {
        return false;
    }
    return true;
}

void CFileManager::registerSuffixedModeDir(const std::string& name) {
    for (const char* const layer : {"cpril1", "cpril2"}) {
        if (startsWith(name, ("2g5-" + std::string(layer)).c_str())) {
            addType(layer);
            addTypeToMode(layer, "cpri");
            return;
        }
    }
    // Stays as it is for everything scanned from here on, later siblings included, until another rule sets
    // it.
    typePrefixFlag = startsWith(name, "kts-");
    addMode(name);
}

void CFileManager::registerTypeOrPortDir(const std::string& name) {
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
    if (name == "screen") {
        addMode("ktb-rslt");
        addTypeToMode(name, "ktb-rslt");
    }
    addType(name);
}
