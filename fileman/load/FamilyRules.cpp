#include "fileman/load/FamilyRules.h"

#include "common/CCommUtils.h"
#include "fileman/CFileManager.h"

namespace {

using Keys = std::optional<TypeKeys>;

constexpr int kSetupLength = 6; // "-setup"
constexpr int kMpegLength = 5;  // "-mpeg"

bool endsWith(const std::string& name, const char* suffix) {
    return CCommUtils::isEndsWith(name, suffix);
}

Keys sameKey(const std::string& key) {
    return TypeKeys{key, key};
}

Keys strippedName(const std::string& dirName) {
    if (!CFileManager::isValidTypeDirName(dirName))
        return std::nullopt;
    return sameKey(CFileManager::str2Type(dirName, -1));
}

// The filter is asked with one key and the record gets another: wanted.
Keys fiberProfile(const std::string& dirName) {
    if (!CFileManager::isValidTypeDirName(dirName))
        return std::nullopt;
    return TypeKeys{CFileManager::str2Type(dirName, -1), CFileManager::str2Type(dirName, kSetupLength)};
}

Keys sdhResult(const std::string& dirName) {
    return endsWith(dirName, "-prof") ? std::nullopt : sameKey(dirName);
}

Keys sdhProfile(const std::string& dirName) {
    if (!endsWith(dirName, "-prof") || CCommUtils::isEquals(dirName, "sdh2g5-prof"))
        return std::nullopt;
    for (const char* const key : {"ds1", "ds3", "sonet"}) {
        if (CCommUtils::isContains(dirName, key))
            return sameKey(key);
    }
    return sameKey("bert");
}

// "-trace" is not stripped while its neighbours are: wanted.
Keys cableProfile(const std::string& dirName) {
    if (endsWith(dirName, "-setup"))
        return sameKey(CFileManager::str2Type(dirName, kSetupLength));
    if (endsWith(dirName, "-trace"))
        return sameKey(CFileManager::str2Type(dirName, 0));
    if (endsWith(dirName, "-mpeg"))
        return sameKey(CFileManager::str2Type(dirName, kMpegLength));
    return std::nullopt;
}

Keys cpriProfile(const std::string& dirName) {
    return endsWith(dirName, "-rslt") ? std::nullopt : strippedName(dirName);
}

constexpr auto kBertOnly = nullptr;

// clang-format off
constexpr FamilyRule kFamilyRules[] = {
    // family          half           mode directory     port                    type keys     types         scratch
    {TM_ETHERNET,      Half::Result,  ModeDir::Append,   PortFrom::DirLabel,     strippedName, Types::Any,   Scratch::Keep},
    {TM_ETHERNET,      Half::Profile, ModeDir::Append,   PortFrom::DirLabel,     strippedName, Types::Any,   Scratch::Drop},
    {TM_FIBER_CHANNEL, Half::Result,  ModeDir::Append,   PortFrom::DirLabel,     strippedName, Types::Any,   Scratch::Keep},
    {TM_FIBER_CHANNEL, Half::Profile, ModeDir::Append,   PortFrom::DirLabel,     fiberProfile, Types::Any,   Scratch::Drop},
    {TM_SDH,           Half::Result,  ModeDir::None,     PortFrom::Root,         sdhResult,    Types::Known, Scratch::Drop},
    {TM_SDH,           Half::Profile, ModeDir::None,     PortFrom::None,         sdhProfile,   Types::Known, Scratch::Drop},
    {TM_COMMON,        Half::Profile, ModeDir::Append,   PortFrom::Dir,          strippedName, Types::Any,   Scratch::Keep},
    {TM_OTUX,          Half::Result,  ModeDir::None,     PortFrom::RootOtux,     kBertOnly,    Types::Known, Scratch::Keep},
    {TM_OTUX,          Half::Profile, ModeDir::Append,   PortFrom::DirLabelOtux, strippedName, Types::Any,   Scratch::Drop},
    {TM_ODU0,          Half::Profile, ModeDir::Append,   PortFrom::DirLabelOtux, strippedName, Types::Any,   Scratch::Drop},
    {TM_CABLE,         Half::Result,  ModeDir::Append,   PortFrom::None,         strippedName, Types::Any,   Scratch::Keep},
    {TM_CABLE,         Half::Profile, ModeDir::Append,   PortFrom::None,         cableProfile, Types::Any,   Scratch::Drop},
    {TM_CPRI,          Half::Result,  ModeDir::Required, PortFrom::Root,         strippedName, Types::Any,   Scratch::Keep},
    {TM_CPRI,          Half::Profile, ModeDir::Required, PortFrom::None,         cpriProfile,  Types::Any,   Scratch::Drop},
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
