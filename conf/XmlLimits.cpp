#include "conf/XmlLimits.h"

#include <tinyxml.h>

#include <algorithm>
#include <optional>

#include "conf/XmlTags.h"

namespace {

constexpr int kDeepestNesting = 128;
// Less than so many bytes cannot hold more start tags than that: most files that tell about results.
constexpr std::size_t kHarmless = kDeepestNesting * std::string_view("<x>").size();
constexpr std::size_t kMostAttributes = 256;
constexpr std::string_view kTooManyAttributes = "an element has more than 256 attributes";
// All in one element, so many cost the parser a tenth of a second: they can be counted when it is done, which
// is far cheaper than the walk along the tags.
constexpr std::size_t kFewAttributes = 4096;
// Of the 64 MiB that a request may take; the rest is the program's own.
constexpr std::size_t kMostMemory = std::size_t{56} * 1024 * 1024;

// What one byte can cost at most in memory, copies in the records that are made of the document included.
constexpr std::size_t kMemoryOfElement = 640;  // '<': an element, the text behind it, a record
constexpr std::size_t kMemoryOfValue = 256;    // '=': an attribute; ',': an entry of a list
constexpr std::size_t kMemoryOfReference = 16; // '&': no memory but time, which is short for 16 MiB of them
constexpr std::size_t kMemoryOfText = 3;       // a text that grows is held three times for a moment

std::size_t count(const std::string& text, char byte) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), byte));
}

// An upper bound: it counts what looks like a tag, attribute or list, wherever it stands.
std::size_t mostMemory(const std::string& text) {
    return text.size() * kMemoryOfText + count(text, '<') * kMemoryOfElement +
           (count(text, '=') + count(text, ',')) * kMemoryOfValue + count(text, '&') * kMemoryOfReference;
}

// An upper bound of the elements that can be open at once: to open one, the parser has to stand at a '>', and
// it never does so behind a '/'.
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
    // Most documents are so small that they cannot pass the other limits.
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
