#include "conf/xml/XmlRewrite.h"

#include <tinyxml.h>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "common/CCommUtils.h"
#include "conf/xml/XmlFile.h"
#include "conf/xml/XmlTags.h"
#include "conf/xml/XmlText.h"

namespace {

using Elements = std::vector<const TiXmlElement*>;

// All elements below node, in document order. The document's limits bound the recursion.
void collect(const TiXmlNode& node, Elements& out) {
    xml::forEachChild(node, [&](const TiXmlElement& element) {
        out.push_back(&element);
        collect(element, out);
    });
}

Elements elementsOf(const TiXmlDocument& document) {
    Elements elements;
    collect(document, elements);
    return elements;
}

// Appends the changed values of one start tag to out, and the unchanged text before and between them. from is
// the position in text up to which out is complete. Returns the new position.
std::size_t appendValues(std::string& out, std::size_t from, const std::string& text, const XmlTags& tags,
                         const TiXmlElement& before, const TiXmlElement& after) {
    const TiXmlAttribute* old = before.FirstAttribute();
    for (const TextRange& value : tags.values()) {
        const char* const now = after.Attribute(old->Name());
        if (now != nullptr && old->ValueStr() != now) {
            out.append(text, from, value.begin - from).append(quotedXmlText(now));
            from = value.end;
        }
        old = old->Next();
    }
    return from;
}

// Appends the attributes that the tag lacks, after its last attribute or before the end of the tag.
std::size_t appendNew(std::string& out, std::size_t from, const std::string& text, const XmlTags& tags,
                      const TiXmlElement& before, const TiXmlElement& after) {
    const bool isEmpty = text[tags.end() - 2] == '/';
    const std::size_t place =
        tags.values().empty() ? tags.end() - (isEmpty ? 2 : 1) : tags.values().back().end;
    for (const TiXmlAttribute* now = after.FirstAttribute(); now != nullptr; now = now->Next()) {
        if (before.Attribute(now->Name()) != nullptr)
            continue;
        out.append(text, from, place - from);
        out.append(" ").append(now->Name()).append("=").append(quotedXmlText(now->Value()));
        from = place;
    }
    return from;
}

bool isNextElement(XmlTags& tags) {
    std::optional<XmlTag> tag = tags.next();
    while (tag && *tag == XmlTag::End)
        tag = tags.next();
    return tag.has_value();
}

std::ptrdiff_t attributeCount(const TiXmlElement& element) {
    std::ptrdiff_t count = 0;
    for (const TiXmlAttribute* each = element.FirstAttribute(); each != nullptr; each = each->Next())
        ++count;
    return count;
}

// Whether a strict parser reads the document as UTF-8: it does unless the document declares another encoding.
bool isUtf8(const TiXmlDocument& document) {
    const TiXmlDeclaration* const declaration = document.FirstChild()->ToDeclaration();
    const std::string encoding = declaration == nullptr ? "" : declaration->Encoding();
    return encoding.empty() || CCommUtils::isEquals(encoding, "UTF-8");
}

// Whether the changed values are allowed in XML. With other values no strict parser would read the document.
bool holdsXmlText(const TiXmlElement& after, const TiXmlElement& before, bool isUtf8) {
    for (const TiXmlAttribute* now = after.FirstAttribute(); now != nullptr; now = now->Next()) {
        const char* const old = before.Attribute(now->Name());
        if ((old == nullptr || now->ValueStr() != old) && !isXmlText(now->ValueStr(), isUtf8))
            return false;
    }
    return true;
}

} // namespace

std::optional<std::string> withAttributesOf(const TiXmlDocument& after, const TiXmlDocument& before,
                                            const std::string& text) {
    const Elements old = elementsOf(before);
    const Elements now = elementsOf(after);
    if (old.size() != now.size())
        return std::nullopt;
    std::string out;
    std::size_t from = 0;
    XmlTags tags(text);
    // Both walks are in document order: element number i belongs to start tag number i.
    for (std::size_t i = 0; i < old.size(); ++i) {
        if (!isNextElement(tags) ||
            attributeCount(*old[i]) != static_cast<std::ptrdiff_t>(tags.values().size()) ||
            !holdsXmlText(*now[i], *old[i], isUtf8(before)))
            return std::nullopt;
        from = appendValues(out, from, text, tags, *old[i], *now[i]);
        from = appendNew(out, from, text, tags, *old[i], *now[i]);
    }
    return out.append(text, from);
}
