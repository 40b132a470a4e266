#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>

class TiXmlDocument;
class TiXmlElement;

// All documents reach TinyXML through these functions. They refuse what the parser cannot handle, before the
// parser sees it: anything except a regular file, and any text over the limits of XmlLimits.h. They also
// refuse a document when memory runs out.
namespace xml {

// The reason for a failure: an errno value when the system failed, otherwise a text about the file.
struct Failure {
    int errorNumber = 0;
    std::string why;
};

// Reads the regular file at path if it has at most largest bytes.
std::optional<std::string> readContent(const std::string& path, off_t largest, Failure& failure);

// Whether a document must have a root element that the parser sees.
enum class Root { Needed, Optional };

// Parses text into document. Returns false when the text is over a limit, not well-formed or lacks a needed
// root. Then document may contain the part that was parsed before the failure.
bool parse(TiXmlDocument& document, std::string text, Failure& failure, Root root = Root::Needed);

// Reads and parses a file of at most 16 MiB. A failure is reported on standard error, except a missing file.
bool parseFile(TiXmlDocument& document, const std::string& path, Root root = Root::Needed);

// The same with a new document as result, or null on failure.
std::unique_ptr<TiXmlDocument> load(const std::string& path);

// Writes the line that parseFile writes. For callers that read or use a document in another way.
void reportFailure(const std::string& path, const Failure& failure);

// Returns the value of an attribute, or "" when the element lacks it.
std::string attribute(const TiXmlElement& element, const char* name);

// Whether the element has this name. Letter case is ignored.
bool isNamed(const TiXmlElement& element, const char* name);

// Calls visit(element) for each child element in document order.
template<typename Parent, typename Visitor>
void forEachChild(Parent& parent, Visitor&& visit) {
    for (auto* child = parent.FirstChildElement(); child != nullptr; child = child->NextSiblingElement())
        visit(*child);
}

} // namespace xml
