#include "fileman/names/TestTypeDirs.h"

#include <algorithm>

#include "common/CCommUtils.h"
#include "fileman/names/Suffixes.h"

namespace {

constexpr std::string_view kTypeSuffixes[] = {suffix::kResult, suffix::kSetup, suffix::kTrace, suffix::kMpeg,
                                              suffix::kRslt,   suffix::kProf,  suffix::kRtd};

struct NamedType {
    const char* directory;
    const char* type;
};
constexpr NamedType kCpriLayers[] = {
    {"layer1-prof", "cpri-layer1"},
    {"cpri-layer1-rslt", "cpri-layer1"},
    {"layer2-prof", "cpri-layer2"},
    {"cpri-layer2-rslt", "cpri-layer2"},
};

} // namespace

bool types::isTypeDir(const std::string& dirName) {
    return std::any_of(std::begin(kTypeSuffixes), std::end(kTypeSuffixes),
                       [&](std::string_view suffix) { return CCommUtils::isEndsWith(dirName, suffix); });
}

std::string types::fromDirName(const std::string& dirName, int suffixLength) {
    if (dirName.empty())
        return "Unknown";
    if (suffixLength >= 0)
        return CCommUtils::cutLast(dirName, static_cast<std::size_t>(suffixLength));
    // A name with another ending gives the empty key here. This is intentional.
    for (const std::string_view suffix : {suffix::kResult, suffix::kSetup}) {
        if (CCommUtils::isEndsWith(dirName, suffix))
            return suffix::cut(dirName, suffix);
    }
    if (CCommUtils::isContains(dirName, "-cpril1-"))
        return "cpril1";
    if (CCommUtils::isContains(dirName, "-cpril2-"))
        return "cpril2";
    return {};
}

std::string types::fromConfiguredDir(const std::string& dirName) {
    for (const NamedType& layer : kCpriLayers) {
        if (CCommUtils::isEquals(dirName, layer.directory))
            return layer.type;
    }
    return dirName;
}

bool types::isFiberMonitor(std::string_view entryName) {
    return CCommUtils::isContains(entryName, "fmonitor");
}
