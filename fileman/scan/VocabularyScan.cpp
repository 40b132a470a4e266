#include "fileman/scan/VocabularyScan.h"

#include <algorithm>
#include <string_view>

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "fileman/names/SdhDirs.h"
#include "fileman/names/Suffixes.h"

namespace {

bool equals(std::string_view name, std::string_view word) {
    return CCommUtils::isEquals(name, word);
}

bool startsWith(std::string_view name, std::string_view prefix) {
    return CCommUtils::isStartsWith(name, prefix);
}

bool endsWith(std::string_view name, std::string_view suffix) {
    return CCommUtils::isEndsWith(name, suffix);
}

bool contains(std::string_view name, std::string_view part) {
    return CCommUtils::isContains(name, part);
}

// Type directories without an ending.
bool isSpecialType(std::string_view name) {
    static constexpr std::string_view kSpecialTypes[] = {"opm", "screen", "fiberscope", "odm", "wsa"};
    return std::find(std::begin(kSpecialTypes), std::end(kSpecialTypes), name) != std::end(kSpecialTypes);
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

// Returns the type key for the results of a CPRI layer, which are beside the modes of their module. Returns
// null for other names.
const char* cpriLayerOf(const std::string& name) {
    if (startsWith(name, "2g5-cpril1"))
        return "cpril1";
    return startsWith(name, "2g5-cpril2") ? "cpril2" : nullptr;
}

bool isSuffixedDir(const std::string& name) {
    return endsWith(name, suffix::kRslt) || endsWith(name, suffix::kProf);
}

// Returns the configured directory name of the mode that a directory means, or "" when it means none.
std::string modeKeyOf(const std::string& name, const std::string& path) {
    if (sdh::isDir(name, path))
        return "ktp-rslt";
    if (equals(name, "ktr") || equals(name, "otux") || equals(name, "cpri"))
        return name;
    if (startsWith(name, "odu0"))
        return endsWith(name, "bert") ? std::string() : name;
    if (isSuffixedDir(name))
        return cpriLayerOf(name) == nullptr ? name : std::string();
    return name == "screen" ? "ktb-rslt" : std::string();
}

void addPort(const std::string& name, std::string_view suffix, const char* portOf10g) {
    CFileManConf::addCurrentPort(
        startsWith(name, "10g") ? portOf10g : CFileManConf::getPortName(suffix::cut(name, suffix)));
}

// Adds the port whose directory has exactly this name.
void addPortOf(const std::string& name) {
    if (equals(name, "p1"))
        CFileManConf::addCurrentPort("P1");
    else if (equals(name, "p2"))
        CFileManConf::addCurrentPort("P2");
}

void registerPortDir(const std::string& name) {
    if (endsWith(name, suffix::kPort))
        addPort(name, suffix::kPort, "10G P1");
    else if (endsWith(name, suffix::kPort2))
        addPort(name, suffix::kPort2, "10G P2");
    else
        addPortOf(name);
}

// The companion directories of reports contain only pictures, and "usbd" is an external medium.
bool isScannedName(const std::string& name) {
    return name != "usbd" && !endsWith(name, suffix::kFiles);
}

} // namespace

void VocabularyScan::scan(const std::string& path) {
    registerDirectory(path);
    const Directory* const directory = m_tree.openListed(path);
    if (directory == nullptr)
        return;
    for (const DirEntry entry : *directory) {
        if (entry.type == EntryType::Directory && isScannedName(std::string(entry.name)))
            scan(entryPath(path, entry.name));
    }
}

bool VocabularyScan::registersMode(const std::string& root, const std::string& path,
                                   const std::string& mode) {
    for (std::size_t end = root.size(); end != std::string::npos;) {
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

// The meaning of a directory follows from its name, the name of its parent, and for the SDH family its path.
void VocabularyScan::registerDirectory(const std::string& path) {
    const std::string name = CCommUtils::dirName(path);
    const std::string parent = CCommUtils::upDirName(path);
    const std::string mode = modeKeyOf(name, path);
    if (sdh::isDir(name, path))
        return registerSdhDir(name, parent, mode);
    if (registerModeDir(name, parent, mode))
        return;
    if (isSuffixedDir(name))
        registerSuffixedModeDir(name, mode);
    else
        registerTypeOrPortDir(name, mode);
}

void VocabularyScan::registerSdhDir(const std::string& name, const std::string& parent,
                                    const std::string& mode) {
    typePrefixFlag = false;
    addMode(mode);
    addPortOf(parent);
    const std::string key = sdh::typeKey(name);
    addType(key);
    addTypeToMode(key, mode);
}

// Registers a mode directory that has a fixed name or a fixed beginning. Returns false for any other name.
bool VocabularyScan::registerModeDir(const std::string& name, const std::string& parent,
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

void VocabularyScan::registerSuffixedModeDir(const std::string& name, const std::string& mode) {
    if (const char* const layer = cpriLayerOf(name)) {
        addType(layer);
        addTypeToMode(layer, "cpri");
        return;
    }
    // The flag applies to everything that is scanned from here on, also to later siblings, until another rule
    // sets it. This is intentional.
    typePrefixFlag = startsWith(name, "kts-");
    addMode(mode);
}

void VocabularyScan::registerTypeOrPortDir(const std::string& name, const std::string& mode) {
    for (const std::string_view suffix : {suffix::kResult, suffix::kSetup}) {
        if (endsWith(name, suffix)) {
            const std::string key = suffix::cut(name, suffix);
            return addType(typePrefixFlag && !key.empty() ? key.substr(1) : key);
        }
    }
    // The key is the whole name, unlike for the other endings. This is intentional: these types have such
    // keys.
    if (endsWith(name, suffix::kTrace))
        return addType(name);
    if (endsWith(name, suffix::kMpeg))
        return addType(suffix::cut(name, suffix::kMpeg));
    if (!isSpecialType(name))
        return registerPortDir(name);
    if (!mode.empty()) {
        addMode(mode);
        addTypeToMode(name, mode);
    }
    addType(name);
}
