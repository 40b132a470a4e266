#pragma once

#include <string_view>

// Whether a directory entry is the directory itself or its parent.
inline bool isDotEntry(std::string_view name) {
    return name == "." || name == "..";
}
