#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "fileman/ResultInfo.h"

// The identifiers and readable names of records hold so many bytes at most; the rest is cut off. Both are
// part of the interface: the browser side asks for records by identifier.
inline constexpr std::size_t kLongestId = 255;

// "mode_port_test_rsltype_": what the identifiers of all files of one source begin with.
std::string idPrefix(const _ResultInfo& record);

// Replaces what stands behind the prefix in id by the record's name, and cuts the whole to kLongestId.
void putName(std::string& id, std::size_t prefixSize, std::string_view name);

std::string makeId(const _ResultInfo& record);
