#include "fileman/names/FlatModes.h"

#include "common/CCommUtils.h"

namespace {

struct FlatMode {
    const char* mode;
    const char* type;
};
constexpr FlatMode kFlatModes[] = {{"SDH/PDH", "bert"}, {"OSA", "osa"}};

} // namespace

std::string typeOfFlatMode(const std::string& mode) {
    for (const FlatMode& flat : kFlatModes) {
        if (CCommUtils::isEquals(mode, flat.mode))
            return flat.type;
    }
    return {};
}
