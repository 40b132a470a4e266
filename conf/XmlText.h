#pragma once

#include <string_view>

// Whether every character of the text may stand in a document, written as it is or as a reference: XML 1.0,
// production Char. In UTF-8 the bytes have to be characters; in other encodings only the control characters
// below the blank are looked at.
bool isXmlText(std::string_view text, bool isUtf8);
