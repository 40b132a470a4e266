#pragma once

#include <algorithm>
#include <string>
#include <string_view>

// Control bytes are those below 0x20, and 0x7f. They must not appear in a log or header line. Higher bytes
// may be part of a UTF-8 character.
inline bool isControlByte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

inline bool hasControlByte(std::string_view text) {
    return std::any_of(text.begin(), text.end(), isControlByte);
}

// Returns the text with '?' for each control byte.
inline std::string withoutControlBytes(std::string_view text) {
    std::string line(text);
    std::replace_if(line.begin(), line.end(), isControlByte, '?');
    return line;
}
