#include "conf/xml/XmlText.h"

#include <array>
#include <cstddef>
#include <cstdio>

#include "common/Utf8.h"

namespace {

// Every UTF-8 character is allowed, except most control characters and two that are no characters.
bool isXmlCharacter(std::string_view character) {
    const auto first = static_cast<unsigned char>(character.front());
    if (first < 0x20)
        return first == '\t' || first == '\n' || first == '\r';
    return character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF"; // U+FFFE, U+FFFF
}

std::string escaped(char c) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    default:
        break;
    }
    if (static_cast<unsigned char>(c) >= ' ')
        return {c};
    std::array<char, 8> reference{};
    std::snprintf(reference.data(), reference.size(), "&#x%02X;", static_cast<unsigned>(c));
    return reference.data();
}

} // namespace

bool isXmlText(std::string_view text, bool isUtf8) {
    while (!text.empty()) {
        const std::size_t length = isUtf8 ? utf8Length(text) : 1;
        if (length == 0 || !isXmlCharacter(text.substr(0, length)))
            return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string quotedXmlText(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text)
        quoted += escaped(c);
    return quoted + "\"";
}
