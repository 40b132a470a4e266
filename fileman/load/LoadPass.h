#pragma once

#include <string>
#include <string_view>

#include "common/UniqueNames.h"
#include "conf/ConfRecords.h"
#include "fileman/ResultInfo.h"

enum class Half { Result, Profile };

// The parameters of the pass over one half of a mode option.
LoadInfo modePass(const std::string& module, const ModeOptInfo& option, Half half);

// The kind word of a record.
const char* resultWord(bool isResult);

// Type key of a fixed subdirectory: its name, except for the CPRI layers.
std::string fixedDirType(const std::string& dirName);

// The one type of the modes whose files lie in the mode's directory itself; "" for every other mode.
std::string flatModeType(const std::string& mode);

// Whether the module and mode are those of the MTIE measurements, which lie in a directory of their own.
bool isMtieMode(const std::string& module, const std::string& mode);

// Whether an entry stands for the fiber monitor rather than for a port.
bool isFmonitorEntry(std::string_view name);

// The port names that the configured directory names stand for.
UniqueNames knownPorts(const LoadInfo& info);
