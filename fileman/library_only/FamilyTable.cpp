#include "fileman/library_only/FamilyTable.h"

#include "common/CCommUtils.h"
#include "fileman/names/Suffixes.h"
#include "fileman/names/TestTypeDirs.h"

namespace {

using Keys = std::optional<TypeKeys>;

bool endsWith(const std::string& name, std::string_view suffix) {
    return CCommUtils::isEndsWith(name, suffix);
}

Keys sameKey(const std::string& key) {
    return TypeKeys{key, key};
}

Keys strippedName(const std::string& dirName) {
    if (!types::isTypeDir(dirName))
        return std::nullopt;
    return sameKey(types::fromDirName(dirName));
}

// The filter tests one key, and the record gets another. This is intentional.
Keys fiberProfile(const std::string& dirName) {
    if (!types::isTypeDir(dirName))
        return std::nullopt;
    return TypeKeys{types::fromDirName(dirName), suffix::cut(dirName, suffix::kSetup)};
}

Keys sdhResult(const std::string& dirName) {
    return endsWith(dirName, suffix::kProf) ? std::nullopt : sameKey(dirName);
}

Keys sdhProfile(const std::string& dirName) {
    if (!endsWith(dirName, suffix::kProf) || CCommUtils::isEquals(dirName, "sdh2g5-prof"))
        return std::nullopt;
    for (const char* const key : {"ds1", "ds3", "sonet"}) {
        if (CCommUtils::isContains(dirName, key))
            return sameKey(key);
    }
    return sameKey("bert");
}

// "-trace" stays in the key, while "-setup" and "-mpeg" are cut off. This is intentional.
Keys cableProfile(const std::string& dirName) {
    if (endsWith(dirName, suffix::kSetup))
        return sameKey(suffix::cut(dirName, suffix::kSetup));
    if (endsWith(dirName, suffix::kTrace))
        return sameKey(dirName);
    if (endsWith(dirName, suffix::kMpeg))
        return sameKey(suffix::cut(dirName, suffix::kMpeg));
    return std::nullopt;
}

Keys cpriProfile(const std::string& dirName) {
    return endsWith(dirName, suffix::kRslt) ? std::nullopt : strippedName(dirName);
}

constexpr auto kBertOnly = nullptr;

// clang-format off
constexpr FamilyRule kFamilyRules[] = {
    // family          half           mode directory     port                    type keys     types         the last configuration
    {TM_ETHERNET,      Half::Result,  ModeDir::Append,   PortFrom::DirLabel,     strippedName, Types::Any,   LastConfiguration::Keep},
    {TM_ETHERNET,      Half::Profile, ModeDir::Append,   PortFrom::DirLabel,     strippedName, Types::Any,   LastConfiguration::Drop},
    {TM_FIBER_CHANNEL, Half::Result,  ModeDir::Append,   PortFrom::DirLabel,     strippedName, Types::Any,   LastConfiguration::Keep},
    {TM_FIBER_CHANNEL, Half::Profile, ModeDir::Append,   PortFrom::DirLabel,     fiberProfile, Types::Any,   LastConfiguration::Drop},
    {TM_SDH,           Half::Result,  ModeDir::None,     PortFrom::Root,         sdhResult,    Types::Known, LastConfiguration::Drop},
    {TM_SDH,           Half::Profile, ModeDir::None,     PortFrom::None,         sdhProfile,   Types::Known, LastConfiguration::Drop},
    {TM_COMMON,        Half::Profile, ModeDir::Append,   PortFrom::Dir,          strippedName, Types::Any,   LastConfiguration::Keep},
    {TM_OTUX,          Half::Result,  ModeDir::None,     PortFrom::RootOtux,     kBertOnly,    Types::Known, LastConfiguration::Keep},
    {TM_OTUX,          Half::Profile, ModeDir::Append,   PortFrom::DirLabelOtux, strippedName, Types::Any,   LastConfiguration::Drop},
    {TM_ODU0,          Half::Profile, ModeDir::Append,   PortFrom::DirLabelOtux, strippedName, Types::Any,   LastConfiguration::Drop},
    {TM_CABLE,         Half::Result,  ModeDir::Append,   PortFrom::None,         strippedName, Types::Any,   LastConfiguration::Keep},
    {TM_CABLE,         Half::Profile, ModeDir::Append,   PortFrom::None,         cableProfile, Types::Any,   LastConfiguration::Drop},
    {TM_CPRI,          Half::Result,  ModeDir::Required, PortFrom::Root,         strippedName, Types::Any,   LastConfiguration::Keep},
    {TM_CPRI,          Half::Profile, ModeDir::Required, PortFrom::None,         cpriProfile,  Types::Any,   LastConfiguration::Drop},
};
// clang-format on

} // namespace

const FamilyRule* findFamilyRule(TestMode family, Half half) {
    for (const FamilyRule& rule : kFamilyRules) {
        if (rule.family == family && rule.half == half)
            return &rule;
    }
    return nullptr;
}

bool isCapture(const FamilyRule& rule, const std::string& type) {
    return rule.family == TM_ETHERNET && rule.half == Half::Result && CCommUtils::isEquals(type, "pcap");
}

bool isBesidePorts(const std::string& dirName) {
    return dirName == "opm" || dirName == "fiberscope" || dirName == "odm" || dirName == "wsa";
}
