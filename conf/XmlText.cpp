#include "conf/XmlText.h"

#include <cstddef>
#include <cstdint>

namespace {

// RFC 3629: the fixed bits of the lead byte, the length, and the smallest character of this form.
struct Utf8Form {
    unsigned mask;
    unsigned lead;
    std::size_t length;
    std::uint32_t smallest;
};
constexpr Utf8Form kForms[] = {
    {0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};
constexpr Utf8Form kSingleByte = {0, 0, 1, 0};

const Utf8Form* formOf(unsigned char lead) {
    for (const Utf8Form& form : kForms) {
        if ((lead & form.mask) == form.lead)
            return &form;
    }
    return nullptr;
}

bool isXmlCharacter(std::uint32_t c) {
    if (c < 0x20)
        return c == '\t' || c == '\n' || c == '\r';
    return c < 0xD800 || (c >= 0xE000 && c < 0xFFFE) || (c >= 0x10000 && c < 0x110000);
}

} // namespace

bool isXmlText(std::string_view text, bool isUtf8) {
    while (!text.empty()) {
        const auto lead = static_cast<unsigned char>(text[0]);
        const Utf8Form* const form = isUtf8 ? formOf(lead) : &kSingleByte;
        if (form == nullptr || form->length > text.size())
            return false;
        std::uint32_t character = lead & ~form->mask;
        for (const char c : text.substr(1, form->length - 1)) {
            const auto byte = static_cast<unsigned char>(c);
            if ((byte & 0xC0u) != 0x80u)
                return false;
            character = character << 6 | (byte & 0x3Fu);
        }
        if (character < form->smallest || !isXmlCharacter(character))
            return false;
        text.remove_prefix(form->length);
    }
    return true;
}
