#pragma once

#include <string>

#include "fileman/ResultInfo.h"

// Returns "[name]-[type]-[port]-[mode]", cut to kLongestId. A result has a folder of this name in its
// archive.
std::string folderName(const _ResultInfo& record);
