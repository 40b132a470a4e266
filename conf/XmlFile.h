#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>

class TiXmlDocument;
class TiXmlElement;

// The one way to TinyXML. What the parser cannot cope with is refused before it sees it: anything but a
// regular file, and what passes the limits of XmlLimits.h. A document for which memory runs out is refused
// as well.
namespace xml {

// Why there is no document: an errno value when the system refused, else what is wrong with the file.
struct Failure {
    int errorNumber = 0;
    std::string why;
};

// The content of the regular file at path, which has largest bytes at most.
std::optional<std::string> readContent(const std::string& path, off_t largest, Failure& failure);

// Whether a document has to have a root element that the parser sees.
enum class Root { Needed, Optional };

// Parses text into document; false when it is refused, not well-formed or lacks a needed root (what was
// parsed until then may stay in document).
bool parse(TiXmlDocument& document, std::string text, Failure& failure, Root root = Root::Needed);

// Both, for a file of 16 MiB at most. A failure gets one line on standard error, unless there is no file.
bool parseFile(TiXmlDocument& document, const std::string& path, Root root = Root::Needed);

// The same as a new document, or null.
std::unique_ptr<TiXmlDocument> load(const std::string& path);

// The line of parseFile, for whoever reads or uses a document in another way.
void reportFailure(const std::string& path, const Failure& failure);

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
