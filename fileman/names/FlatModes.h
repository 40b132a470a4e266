#pragma once

#include <string>

// Flat modes: their files lie in the mode's directory itself, not below directories of ports and types.

// Returns the only type of a flat mode, or "" for every other mode. Letter case does not matter.
std::string typeOfFlatMode(const std::string& mode);
