#pragma once

#include <string>
#include <string_view>

// Whether XML allows every character of the text, as it is or as a reference (XML 1.0, production Char).
// UTF-8 must be valid. In other encodings only the control characters below 0x20 are checked.
bool isXmlText(std::string_view text, bool isUtf8);

// Returns the text as the value of an attribute, between double quotes. References replace the characters
// that have a meaning there, and control characters.
std::string quotedXmlText(std::string_view text);
