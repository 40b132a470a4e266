#pragma once

#include <string>
#include <string_view>

// Escapes values for strict answers, so that no value can end the element, attribute or string that contains
// it.
namespace escape {

// For the text of an HTML element, or between the quotes of an attribute. HTML does not allow control
// characters (except tab and line feed) and bytes that are not UTF-8; each of them becomes U+FFFD.
std::string forHtml(std::string_view value);

// Whether a JSON string can contain the value without an escape.
bool isPlainInJson(std::string_view value);

// Appends the value as the inside of a JSON string, which may also be in a script element: "<", ">", "&",
// U+2028, U+2029 and control characters are escaped by number. A byte outside of UTF-8 characters becomes the
// lone surrogate U+DC00 plus the byte. So different names stay different, and each can be turned back into
// its bytes. Python's "surrogateescape" follows the same rule.
void appendJson(std::string& out, std::string_view value);

// Whether a field of CSV (RFC 4180) can contain the value without quotes.
bool isPlainInCsv(std::string_view value);

// Appends the value as a field of CSV in quotes. The bytes stay as they are stored, also those outside of
// UTF-8 characters; only quotes are doubled.
void appendCsv(std::string& out, std::string_view value);

// Percent-encodes every byte except letters, digits and the bytes in plain.
std::string percentEncoded(std::string_view value, std::string_view plain);

} // namespace escape
