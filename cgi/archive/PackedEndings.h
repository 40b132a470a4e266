#pragma once

#include <string_view>

// Whether a file of this name is already compressed. An archive stores such a file as it is.
bool hasPackedEnding(std::string_view name);
