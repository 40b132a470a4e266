#pragma once

#include <optional>
#include <string>

class TiXmlDocument;

// The text from which before was parsed, with the attribute values in which after differs from before: a
// value is replaced where it stands, a new attribute goes to the end of its tag, all other bytes stay. The
// parser's own printer would lose what it does not know. Nothing when the three do not belong together, or
// when a new value cannot stand in a document.
std::optional<std::string> withAttributesOf(const TiXmlDocument& after, const TiXmlDocument& before,
                                            const std::string& text);
