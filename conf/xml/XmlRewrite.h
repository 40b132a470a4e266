#pragma once

#include <optional>
#include <string>

class TiXmlDocument;

// Returns text with the attribute values of after. text is what before was parsed from; after has the same
// elements with other attribute values. A changed value is replaced in its place, a new attribute is added at
// the end of its tag, and all other bytes stay. The parser's own printer would change line ends, blanks and
// quotes, and would lose what the parser does not know. Returns nullopt when the three do not belong
// together, or when a new value is not allowed in XML.
std::optional<std::string> withAttributesOf(const TiXmlDocument& after, const TiXmlDocument& before,
                                            const std::string& text);
