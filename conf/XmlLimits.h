#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>

class TiXmlElement;

// What a document may hold. The text is tested before the parser sees it: the parser recurses with each
// nested element, compares each attribute with all before it in its element, and holds as much as it is
// given.
namespace xml {

// In bytes.
inline constexpr off_t kLargestFile = off_t{16} * 1024 * 1024;
inline constexpr off_t kLargestCompanion = off_t{1} * 1024 * 1024;

// Why the parser must not see the text: which limit it passes. Nothing when it may.
std::string_view passedLimit(const std::string& text);

// The same for what the parser made of a text that it may see: a few attributes too many are found only here.
std::string_view passedLimit(const TiXmlElement& root);

// An upper bound of the time that the parser takes for a text within the limits, in units of some 10 ns on a
// processor of 2020.
std::size_t parseCost(const std::string& text);

} // namespace xml
