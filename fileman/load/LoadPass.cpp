#include "fileman/load/LoadPass.h"

#include "common/CCommUtils.h"
#include "fileman/CFileManager.h"

LoadInfo modePass(const std::string& module, const ModeOptInfo& option, Half half) {
    if (half == Half::Result)
        return {module,
                option.mode_name,
                option.rslt_dir_name,
                option.rslt_under_port_dir ? 1 : 0,
                option.rslt_list,
                1};
    return {
        module, option.mode_name, option.prof_dir_name, option.prof_under_port_dir ? 1 : 0, option.prof_list,
        0};
}

const char* resultWord(bool isResult) {
    return isResult ? "Result" : "Profile";
}

std::string fixedDirType(const std::string& dirName) {
    static constexpr struct {
        const char* dirName;
        const char* type;
    } kLayers[] = {
        {"layer1-prof", "cpri-layer1"},
        {"cpri-layer1-rslt", "cpri-layer1"},
        {"layer2-prof", "cpri-layer2"},
        {"cpri-layer2-rslt", "cpri-layer2"},
    };
    for (const auto& layer : kLayers) {
        if (CCommUtils::isEquals(dirName, layer.dirName))
            return layer.type;
    }
    return dirName;
}

std::string flatModeType(const std::string& mode) {
    if (CCommUtils::isEquals(mode, "SDH/PDH"))
        return "bert";
    if (CCommUtils::isEquals(mode, "OSA"))
        return "osa";
    return {};
}

bool isMtieMode(const std::string& module, const std::string& mode) {
    return CCommUtils::isEquals(module, "2G5") && CCommUtils::isEquals(mode, "SDH/PDH");
}

bool isFmonitorEntry(std::string_view name) {
    return name.find("fmonitor") != std::string_view::npos;
}

UniqueNames knownPorts(const LoadInfo& info) {
    UniqueNames ports;
    for (const std::string& dirName : info.subDirs)
        ports.add(CFileManager::str2Port(dirName, -1));
    return ports;
}
