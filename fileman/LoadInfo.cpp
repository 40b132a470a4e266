#include "fileman/LoadInfo.h"

LoadInfo loadInfoOf(const std::string& module, const ModeOptInfo& option, Half half) {
    LoadInfo info;
    info.module = module;
    info.mode = option.mode_name;
    if (half == Half::Result) {
        info.dir = option.rslt_dir_name;
        info.scanTree = option.rslt_under_port_dir ? 1 : 0;
        info.subDirs = option.rslt_list;
        info.isResult = 1;
    } else {
        info.dir = option.prof_dir_name;
        info.scanTree = option.prof_under_port_dir ? 1 : 0;
        info.subDirs = option.prof_list;
    }
    return info;
}

LoadInfo portTreeInfo(const std::string& module, const std::string& mode, const std::string& dir,
                      const std::list<std::string>& portDirs, Half half) {
    LoadInfo info;
    info.module = module;
    info.mode = mode;
    info.dir = dir;
    info.scanTree = 1;
    info.subDirs = portDirs;
    info.isResult = half == Half::Result ? 1 : 0;
    return info;
}

const char* halfWord(bool isResult) {
    return isResult ? "Result" : "Profile";
}
