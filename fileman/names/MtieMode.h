#pragma once

#include <list>
#include <string>

#include "conf/ConfRecords.h"

// The directories that may contain files of one mode of one module.

// Whether MTIE measurements belong to this module and mode. They have their own directory.
bool isMtieMode(const std::string& module, const std::string& mode);

// Returns all directories of the mode, as full paths.
std::list<std::string> sourceDirs(const ModuleInfo& module, const ModeOptInfo& option);
