#pragma once

#include <string_view>

// Whether XML allows every character of the text, as it is or as a reference (XML 1.0, production Char).
// UTF-8 must be valid. In other encodings only the control characters below 0x20 are checked.
bool isXmlText(std::string_view text, bool isUtf8);
