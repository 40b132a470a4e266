#pragma once

#include <list>
#include <string>

#include "conf/ConfRecords.h"

// Where the files of one mode of one module may lie.

// Whether the module and mode are those of the MTIE measurements, which lie in a directory of their own.
bool isMtieMode(const std::string& module, const std::string& mode);

// All of them, as full paths.
std::list<std::string> sourceDirs(const ModuleInfo& module, const ModeOptInfo& option);
