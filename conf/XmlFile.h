#pragma once

#include <memory>
#include <string>

class TiXmlDocument;
class TiXmlElement;

// The one way to TinyXML. What the parser cannot cope with is refused before it sees it: anything but a
// regular file, more than 16 MiB, more than 128 nested elements (it recurses), more than 4096 attributes in
// one element (it compares each with all before).
namespace xml {

// Parses the file at path into document; false when it is refused or not well-formed (what was parsed until
// then may stay in document).
bool parseFile(TiXmlDocument& document, const std::string& path);

// The parsed file, or null.
std::unique_ptr<TiXmlDocument> load(const std::string& path);

// Gives the file at path, from which document was loaded, the attribute values of document, atomically; every
// other byte stays. False, after a line on standard error, when that failed or when the parser would not read
// the new values back (a text that breaks off within a UTF-8 character): the old file stands then.
bool save(const TiXmlDocument& document, const std::string& path);

// The attribute's value; "" when the element lacks it.
std::string attribute(const TiXmlElement& element, const char* name);

// Whether the element's name equals name without regard to letter case.
bool isNamed(const TiXmlElement& element, const char* name);

// Calls visit(element) for each child element in document order.
template<typename Parent, typename Visitor>
void forEachChild(Parent& parent, Visitor&& visit) {
    for (auto* child = parent.FirstChildElement(); child != nullptr; child = child->NextSiblingElement())
        visit(*child);
}

} // namespace xml
