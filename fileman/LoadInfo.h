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
    int scanTree = 0;               // 1: port and type directories are found on disk; else see subDirs
    std::list<std::string> subDirs; // port directory names if scanTree is 1, else type directory names
    int isResult = 0;               // non-zero: lists results; zero: lists profiles
};

// Returns the parameters for one half of a mode option.
LoadInfo loadInfoOf(const std::string& module, const ModeOptInfo& option, Half half);

// Returns the parameters for a configured directory that contains port directories. scanTree is always 1.
LoadInfo portTreeInfo(const std::string& module, const std::string& mode, const std::string& dir,
                      const std::list<std::string>& portDirs, Half half);

// Returns "Result" or "Profile", for the field rsltype of a record.
const char* halfWord(bool isResult);
