#pragma once

#include <cstddef>
#include <string_view>

// Returns the number of bytes of the UTF-8 character (RFC 3629) at the beginning of text, or 0 if there is
// none. Overlong forms, surrogates and values above U+10FFFF are not characters.
inline std::size_t utf8Length(std::string_view text) {
    const auto byteAt = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned lead = text.empty() ? 0xff : byteAt(0);
    if (lead < 0x80)
        return 1;
    if (lead < 0xc2 || lead > 0xf4)
        return 0;
    const std::size_t length = lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    if (text.size() < length)
        return 0;
    for (std::size_t index = 1; index < length; ++index) {
        if ((byteAt(index) & 0xc0) != 0x80)
            return 0;
    }
    const unsigned second = byteAt(1);
    const bool isForbidden = (lead == 0xe0 && second < 0xa0) || (lead == 0xed && second > 0x9f) ||
                             (lead == 0xf0 && second < 0x90) || (lead == 0xf4 && second > 0x8f);
    return isForbidden ? 0 : length;
}
