#pragma once

#include <list>
#include <string>

#include "conf/ConfRecords.h"

// The two kinds of everything that is stored.
enum class Half { Result, Profile };

// The parameters of one load pass over one configured directory.
struct LoadInfo {
    std::string module;
    std::string mode;               // may be empty
    std::string dir;                // below the storage root; empty loads nothing
    int scanTree = 0;               // 1: port directories, then type directories, found on disk; else subDirs
    std::list<std::string> subDirs; // port directory names when scanTree is 1, else type directory names
    int isResult = 0;               // non-zero lists results, zero profiles
};

// The pass over one half of a mode option.
LoadInfo loadInfoOf(const std::string& module, const ModeOptInfo& option, Half half);

// The pass over a configured directory of ports, whatever the configuration says of its shape.
LoadInfo portTreeInfo(const std::string& module, const std::string& mode, const std::string& dir,
                      const std::list<std::string>& portDirs, Half half);

// The word for the half in a record's rsltype.
const char* halfWord(bool isResult);
