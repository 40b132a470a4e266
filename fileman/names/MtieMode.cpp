#include "fileman/names/MtieMode.h"

#include "common/CCommUtils.h"

bool isMtieMode(const std::string& module, const std::string& mode) {
    return CCommUtils::isEquals(module, kMtieModule) && CCommUtils::isEquals(mode, kMtieMode);
}
