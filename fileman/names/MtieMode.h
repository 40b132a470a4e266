#pragma once

#include <string>

// The module and the mode to which MTIE measurements belong. They have their own directory.
constexpr char kMtieModule[] = "2G5";
constexpr char kMtieMode[] = "SDH/PDH";

bool isMtieMode(const std::string& module, const std::string& mode);
