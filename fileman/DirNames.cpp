#include <algorithm>
#include <string_view>

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "fileman/CFileManager.h"
#include "fileman/disk/StorageTree.h"

namespace {

constexpr char kUnknown[] = "Unknown";
constexpr std::string_view kPort = "port";
constexpr std::string_view kPort2 = "port2";

// Cutting more than there is leaves nothing.
std::string cutLast(const std::string& name, std::size_t count) {
    return count >= name.size() ? std::string() : name.substr(0, name.size() - count);
}

struct FamilyRoots {
    TestMode family;
    std::list<std::string> results;
    std::list<std::string> profiles;
};

// Ethernet and Fiber Channel share their directories, and so do Common and Cable: wanted, type and mode tell
// their files apart.
const FamilyRoots kFamilyRoots[] = {
    {TM_ETHERNET, {"/home/1ge", "/home/10g"}, {"/home/1ge", "/home/10g"}},
    {TM_FIBER_CHANNEL, {"/home/1ge", "/home/10g"}, {"/home/1ge", "/home/10g"}},
    {TM_SDH, {"/home/2g5/html-files/p1", "/home/2g5/html-files/p2"}, {"/home/2g5/html-files"}},
    {TM_ODU0, {"/home/odu0-rslt"}, {"/home/odu0-prof"}},
    {TM_OTUX, {"/home/10g/html-files/p1/otux", "/home/10g/html-files/p2/otux"}, {"/home/10g"}},
    {TM_COMMON, {"/home/root"}, {"/home/root"}},
    {TM_CABLE, {"/home/root"}, {"/home/root"}},
    {TM_CPRI, {"/home/cpri/p1", "/home/cpri/p2"}, {"/home/cpri"}},
};

// A directory name, or its end, and the port label that stands for it.
struct PortLabel {
    const char* pattern;
    const char* label;
};
constexpr PortLabel kPLabels[] = {{"p1", "M1"}, {"p2", "M2"}};
// Crossed on purpose, and unlike str2Port: the plain name is the second module.
constexpr PortLabel k10gLabels[] = {{"10gport", "10G M2"}, {"10gport2", "10G M1"}};

template<std::size_t Count>
std::string labelOf(const PortLabel (&labels)[Count], const std::string& dirName, bool matchSuffix) {
    for (const PortLabel& entry : labels) {
        if (matchSuffix ? CCommUtils::isEndsWith(dirName, entry.pattern)
                        : CCommUtils::isEquals(dirName, entry.pattern))
            return entry.label;
    }
    return {};
}

void listDirectory(const std::string& path, std::list<std::string>& out) {
    const std::optional<Directory> directory = readDirectory(path);
    if (!directory)
        return;
    for (const DirEntry entry : *directory) {
        const std::string listed = entryPath(path, entry.name);
        if (entry.type == EntryType::Directory)
            listDirectory(listed, out);
        else
            out.push_back(listed);
    }
}

} // namespace

void CFileManager::get1stLevelDirNames(std::list<std::string>& out, TestMode mode, bool isResult) {
    for (const FamilyRoots& roots : kFamilyRoots) {
        if (roots.family == mode) {
            const std::list<std::string>& names = isResult ? roots.results : roots.profiles;
            out.insert(out.end(), names.begin(), names.end());
        }
    }
}

bool CFileManager::isDotOrDotDot(const char* name) {
    return name != nullptr && (std::string_view(name) == "." || std::string_view(name) == "..");
}

bool CFileManager::isValidPortDirName(const std::string& dirName) {
    return CCommUtils::isEndsWith(dirName, "port") || CCommUtils::isEndsWith(dirName, "port2");
}

bool CFileManager::isValidTypeDirName(const std::string& dirName) {
    static constexpr const char* kSuffixes[] = {"-result", "-setup", "-trace", "-mpeg",
                                                "-rslt",   "-prof",  "-rtd"};
    return std::any_of(std::begin(kSuffixes), std::end(kSuffixes),
                       [&](const char* suffix) { return CCommUtils::isEndsWith(dirName, suffix); });
}

std::string CFileManager::str2Port(const std::string& dirName, int suffixLen) {
    if (dirName.empty())
        return kUnknown;
    if (CCommUtils::isStartsWith(dirName, "10gport"))
        return CCommUtils::isEndsWith(dirName, "2") ? "10G P2" : "10G P1";
    if (suffixLen >= 0)
        return CFileManConf::getPortName(cutLast(dirName, static_cast<std::size_t>(suffixLen)));
    // Whatever does not end in "port" is taken to end in "port2": wanted, callers have tested the name.
    const bool plain = CCommUtils::isEndsWith(dirName, "port");
    return CFileManConf::getPortName(cutLast(dirName, plain ? kPort.size() : kPort2.size()));
}

std::string CFileManager::str2Type(const std::string& dirName, int suffixLen) {
    if (dirName.empty())
        return kUnknown;
    if (suffixLen >= 0)
        return cutLast(dirName, static_cast<std::size_t>(suffixLen));
    // The other valid suffixes are not stripped: wanted, those types have the empty key here.
    for (const std::string_view suffix : {"-result", "-setup"}) {
        if (CCommUtils::isEndsWith(dirName, std::string(suffix)))
            return cutLast(dirName, suffix.size());
    }
    if (CCommUtils::isContains(dirName, "-cpril1-"))
        return "cpril1";
    if (CCommUtils::isContains(dirName, "-cpril2-"))
        return "cpril2";
    return {};
}

std::string CFileManager::str2PortName(TestMode mode, const std::string& dirName, bool matchSuffix) {
    switch (mode) {
    case TM_SDH:
    case TM_CPRI:
        return labelOf(kPLabels, dirName, matchSuffix);
    case TM_ETHERNET:
    case TM_FIBER_CHANNEL:
    case TM_ODU0:
    case TM_OTUX:
        return labelOf(k10gLabels, dirName, matchSuffix);
    case TM_COMMON:
    case TM_CABLE:
        break;
    }
    return {};
}

std::string CFileManager::str2PortNameOtux(bool isResult, const std::string& dirName, bool matchSuffix) {
    return isResult ? labelOf(kPLabels, dirName, matchSuffix) : labelOf(k10gLabels, dirName, matchSuffix);
}

bool CFileManager::isNeedConvertPortName(TestMode mode, const std::string& dirName) {
    switch (mode) {
    case TM_ETHERNET:
    case TM_ODU0:
    case TM_OTUX:
    case TM_SDH:
        // Every name that holds "10gport" holds "10g".
        return CCommUtils::isContains(dirName, "2g5") || CCommUtils::isContains(dirName, "10g");
    case TM_FIBER_CHANNEL:
        return CCommUtils::isContains(dirName, "10gport");
    case TM_COMMON:
    case TM_CABLE:
    case TM_CPRI:
        break;
    }
    return false;
}

bool CFileManager::isModeMatched(TestMode mode, const std::string& modeName) {
    const auto equals = [&](const char* name) { return CCommUtils::isEquals(modeName, name); };
    const auto contains = [&](const char* part) { return CCommUtils::isContains(modeName, part); };
    switch (mode) {
    case TM_ETHERNET:
        return equals("Ethernet");
    case TM_FIBER_CHANNEL:
        return equals("Fiber Channel");
    case TM_SDH:
        return contains("OTN") || contains("SDH") || contains("SONET") || contains("PDH");
    case TM_ODU0:
        return equals("ODU0");
    case TM_OTUX:
        return equals("OTU-X") || equals("OTUX");
    case TM_COMMON:
        return equals("Common");
    case TM_CABLE:
        return equals("Cable");
    case TM_CPRI:
        return equals("CPRI");
    }
    return false;
}

bool CFileManager::isAntiFileName(std::string_view fileName) {
    constexpr std::string_view kName = "Last configuration";
    constexpr std::string_view kFile = "Last configuration.html";
    return fileName == kName || fileName == kFile;
}

void CFileManager::listDir(const char* dir, std::list<std::string>& out) {
    if (dir != nullptr)
        listDirectory(dir, out);
}
