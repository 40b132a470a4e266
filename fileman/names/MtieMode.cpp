#include "fileman/ModeSources.h"

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/disk/Directory.h"

bool isMtieMode(const std::string& module, const std::string& mode) {
    return CCommUtils::isEquals(module, "2G5") && CCommUtils::isEquals(mode, "SDH/PDH");
}

std::list<std::string> sourceDirs(const ModuleInfo& module, const ModeOptInfo& option) {
    std::list<std::string> dirs;
    for (const std::string& dir : {option.rslt_dir_name, option.prof_dir_name}) {
        if (!dir.empty())
            dirs.push_back(entryPath(paths::kHome, dir));
    }
    if (isMtieMode(module.name, option.mode_name))
        dirs.emplace_back(paths::kMtieDir);
    for (const ExtraDirInfo* const extra : CFileManConf::getExtraDirs(module.name, option.mode_name))
        dirs.push_back(entryPath(paths::kHome, extra->dir_name));
    return dirs;
}
