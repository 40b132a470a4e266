#pragma once

#include <algorithm>
#include <string>
#include <string_view>

// The one rule for what may not stand in a line: bytes below 0x20 and 0x7f. Bytes above may be part of a
// UTF-8 character.
inline bool isControlByte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

inline bool hasControlByte(std::string_view text) {
    return std::any_of(text.begin(), text.end(), isControlByte);
}

// The text with '?' for each of them.
inline std::string withoutControlBytes(std::string_view text) {
    std::string line(text);
    std::replace_if(line.begin(), line.end(), isControlByte, '?');
    return line;
}
