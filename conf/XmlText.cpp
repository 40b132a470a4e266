#include "conf/XmlText.h"

#include <cstddef>

#include "common/Utf8.h"

namespace {

// Every UTF-8 character is allowed, except most control characters and two that are no characters.
bool isXmlCharacter(std::string_view character) {
    const auto first = static_cast<unsigned char>(character.front());
    if (first < 0x20)
        return first == '\t' || first == '\n' || first == '\r';
    return character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF"; // U+FFFE, U+FFFF
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
