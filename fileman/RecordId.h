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

// Replaces id by the prefix with the record's name behind it, cut to kLongestId.
void makeId(std::string& id, std::string_view prefix, std::string_view name);
