#include "conf/xml/XmlLimits.h"

#include <tinyxml.h>

#include <algorithm>
#include <optional>

#include "conf/xml/XmlTags.h"

namespace {

constexpr int kDeepestNesting = 128;
// A text of fewer bytes cannot contain more start tags than that. Most companions are smaller.
constexpr std::size_t kHarmless = kDeepestNesting * std::string_view("<x>").size();
constexpr std::size_t kMostAttributes = 256;
constexpr std::string_view kTooManyAttributes = "an element has more than 256 attributes";
// With this many attributes in one element the parser takes a tenth of a second. So up to this number they
// are counted after parsing, which is far cheaper than to walk along the tags before.
constexpr std::size_t kFewAttributes = 4096;
// The part for a document in the 64 MiB that a request may use. The rest is for the program itself.
constexpr std::size_t kMostMemory = std::size_t{56} * 1024 * 1024;

// The largest memory that one byte of the text can cause, with its copies in the records of the
// configuration.
constexpr std::size_t kMemoryOfElement = 640;  // '<': an element, the text after it, a record
constexpr std::size_t kMemoryOfValue = 256;    // '=': an attribute; ',': an entry of a list
constexpr std::size_t kMemoryOfReference = 16; // '&': time rather than memory; this bounds it
constexpr std::size_t kMemoryOfText = 3;       // while a string grows, three copies of the text exist

std::size_t count(const std::string& text, char byte) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), byte));
}

// An upper bound: it counts every byte that looks like part of a tag, attribute or list.
std::size_t mostMemory(const std::string& text) {
    return text.size() * kMemoryOfText + count(text, '<') * kMemoryOfElement +
           (count(text, '=') + count(text, ',')) * kMemoryOfValue + count(text, '&') * kMemoryOfReference;
}

// An upper bound of the number of elements that are open at the same time: the parser opens an element only
// at a '>' without a '/' before it.
int mostOpenElements(const std::string& text) {
    int open = 0;
    for (std::size_t end = text.find('>'); end != std::string::npos; end = text.find('>', end + 1))
        open += end == 0 || text[end - 1] != '/' ? 1 : 0;
    return open;
}

} // namespace

std::string_view xml::passedLimit(const std::string& text) {
    if (text.size() < kHarmless)
        return {};
    if (text.size() > kMostMemory / kMemoryOfElement && mostMemory(text) > kMostMemory)
        return "it needs too much memory";
    // Most documents are so small that they cannot exceed the other limits.
    if (mostOpenElements(text) < kDeepestNesting && count(text, '=') <= kFewAttributes)
        return {};
    XmlTags tags(text);
    while (const std::optional<XmlTag> tag = tags.next()) {
        if (tags.depth() + (*tag == XmlTag::Empty ? 1 : 0) > kDeepestNesting)
            return "it is nested deeper than 128 elements";
        if (tags.values().size() > kMostAttributes)
            return kTooManyAttributes;
    }
    return {};
}

std::string_view xml::passedLimit(const TiXmlElement& root) {
    std::size_t attributes = 0;
    for (const TiXmlAttribute* each = root.FirstAttribute(); each != nullptr; each = each->Next())
        ++attributes;
    if (attributes > kMostAttributes)
        return kTooManyAttributes;
    std::string_view limit;
    for (const TiXmlElement* child = root.FirstChildElement(); child != nullptr && limit.empty();
         child = child->NextSiblingElement())
        limit = passedLimit(*child);
    return limit;
}

std::size_t xml::parseCost(const std::string& text) {
    const std::size_t attributes = count(text, '=');
    return text.size() + 3 * count(text, '&') + 100 * count(text, '<') +
           attributes * std::min(attributes, kMostAttributes) / 4;
}
