#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>

class TiXmlElement;

// The limits of a document. The text is tested before the parser sees it, because the parser recurses for
// each nested element, compares each attribute with all earlier ones of its element, and has no limit of
// memory.
namespace xml {

// In bytes. A file beside a result has a lower limit (Companion.cpp).
inline constexpr off_t kLargestFile = off_t{16} * 1024 * 1024;

// Returns the limit that the text exceeds, as a text for a message, or "" when the parser may see the text.
std::string_view passedLimit(const std::string& text);

// The same test on a parsed document. It finds an element with slightly too many attributes, which the test
// of the text leaves to it.
std::string_view passedLimit(const TiXmlElement& root);

// Returns an upper bound of the parser's time for a text within the limits. The unit is about 10 ns on a
// processor of the year 2020.
std::size_t parseCost(const std::string& text);

} // namespace xml
