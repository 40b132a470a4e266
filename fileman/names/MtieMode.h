#pragma once

#include <string>

// Whether MTIE measurements belong to this module and mode. They have their own directory.
bool isMtieMode(const std::string& module, const std::string& mode);
