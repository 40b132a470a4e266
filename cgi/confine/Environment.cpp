#include "cgi/confine/Environment.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "common/CCommUtils.h"

namespace {

constexpr std::string_view kKept[] = {"HOME", "LANG", "LANGUAGE", "PATH", "TZ", "TZDIR"};
// The last ones are settings of this program.
constexpr const char* kKeptBeginnings[] = {"LC_", "FILEMAN_"};

bool isKept(const std::string& name, const std::list<std::string>& chosen) {
    return std::any_of(std::begin(kKeptBeginnings), std::end(kKeptBeginnings),
                       [&](const char* beginning) { return CCommUtils::isStartsWith(name, beginning); }) ||
           std::find(std::begin(kKept), std::end(kKept), name) != std::end(kKept) ||
           std::find(chosen.begin(), chosen.end(), name) != chosen.end();
}

} // namespace

void environment::clean() {
    std::list<std::string> chosen;
    if (const char* const value = std::getenv("FILEMAN_PASS_ENVIRONMENT"))
        CCommUtils::split(chosen, ",", value);
    std::vector<std::string> names;
    for (char** variable = ::environ; variable != nullptr && *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        names.emplace_back(text.substr(0, text.find('=')));
    }
    for (const std::string& name : names) {
        if (!isKept(name, chosen))
            ::unsetenv(name.c_str());
    }
}
