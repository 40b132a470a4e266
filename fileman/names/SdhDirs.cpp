#include "fileman/names/SdhDirs.h"

#include <algorithm>
#include <string_view>

#include "common/CCommUtils.h"

bool sdh::isDir(const std::string& name, const std::string& path) {
    static constexpr std::string_view kPrefixes[] = {"ktp-", "sdh10g-", "sdh2g5-"};
    static constexpr std::string_view kNames[] = {"bert", "isdn", "jit", "jtf", "mjt", "pulse", "wan"};
    if (!CCommUtils::isContains(path, "10g") && !CCommUtils::isContains(path, "2g5"))
        return false;
    return std::any_of(std::begin(kPrefixes), std::end(kPrefixes),
                       [&](std::string_view prefix) { return CCommUtils::isStartsWith(name, prefix); }) ||
           std::any_of(std::begin(kNames), std::end(kNames),
                       [&](std::string_view word) { return CCommUtils::isEquals(name, word); });
}

std::string sdh::typeKey(const std::string& name) {
    for (const char* const word : {"bert", "isdn"}) {
        if (CCommUtils::isEquals(name, word))
            return word;
    }
    for (const char* const part : {"ds1", "ds3", "sonet"}) {
        if (CCommUtils::isContains(name, part))
            return part;
    }
    for (const char* const word : {"jit", "jtf", "mjt", "pulse", "wan"}) {
        if (CCommUtils::isEquals(name, word))
            return word;
    }
    return "bert";
}
