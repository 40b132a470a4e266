#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "fileman/ResultInfo.h"

// The longest identifier and readable name of a record, in bytes; the rest is cut off. The limit is part of
// the interface: the browser side names records by identifier.
inline constexpr std::size_t kLongestId = 255;

// Returns "mode_port_test_rsltype_". The identifiers of all files of one source begin with it.
std::string idPrefix(const _ResultInfo& record);

// Keeps the prefix of id, replaces the rest by name, and cuts the result to kLongestId.
void putName(std::string& id, std::size_t prefixSize, std::string_view name);

// Returns "mode_port_test_rsltype_name", cut to kLongestId.
std::string makeId(const _ResultInfo& record);
