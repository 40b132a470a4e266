#include "fileman/library_only/FamilyRoots.h"

#include <array>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"

namespace {

struct FamilyRoots {
    TestMode family;
    std::array<const char*, 2> results; // null after the last one
    std::array<const char*, 2> profiles;
};

// Ethernet and Fiber Channel share their directories, and so do Common and Cable. This is intentional: their
// files differ in type and mode.
constexpr FamilyRoots kFamilyRoots[] = {
    {TM_ETHERNET, {paths::k1geDir, paths::k10gDir}, {paths::k1geDir, paths::k10gDir}},
    {TM_FIBER_CHANNEL, {paths::k1geDir, paths::k10gDir}, {paths::k1geDir, paths::k10gDir}},
    {TM_SDH, {paths::kSdhPort1Dir, paths::kSdhPort2Dir}, {paths::kSdhDir}},
    {TM_ODU0, {paths::kOdu0ResultDir}, {paths::kOdu0ProfileDir}},
    {TM_OTUX, {paths::kOtuxPort1Dir, paths::kOtuxPort2Dir}, {paths::k10gDir}},
    {TM_COMMON, {paths::kRootDir}, {paths::kRootDir}},
    {TM_CABLE, {paths::kRootDir}, {paths::kRootDir}},
    {TM_CPRI, {paths::kCpriPort1Dir, paths::kCpriPort2Dir}, {paths::kCpriDir}},
};

} // namespace

void families::appendRoots(std::list<std::string>& out, TestMode family, bool isResult) {
    for (const FamilyRoots& entry : kFamilyRoots) {
        if (entry.family != family)
            continue;
        for (const char* const root : isResult ? entry.results : entry.profiles) {
            if (root != nullptr)
                out.emplace_back(root);
        }
    }
}

bool families::hasMode(TestMode family, const std::string& modeName) {
    const auto equals = [&](const char* name) { return CCommUtils::isEquals(modeName, name); };
    const auto contains = [&](const char* part) { return CCommUtils::isContains(modeName, part); };
    switch (family) {
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
