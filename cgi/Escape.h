#pragma once

#include <string>
#include <string_view>

// Values as they stand in the places of a strict answer. None can end the place that it stands in.
namespace escape {

// As the text of an HTML element, or between the quotes of an attribute. What HTML cannot carry (control
// characters but tab and line feed, bytes that are no UTF-8) shows as U+FFFD.
std::string forHtml(std::string_view value);

// Whether a JSON string carries the value as it is.
bool isPlainInJson(std::string_view value);

// Appends the value as the inside of a JSON string that may also stand in a script element: "<", ">", "&",
// U+2028, U+2029 and control characters are escaped by number. A byte that belongs to no UTF-8 character
// becomes the lone surrogate U+DC80 to U+DCFF with its number, so that no two names become equal and each
// can be turned back into its bytes (the rule is that of Python's "surrogateescape").
void appendJson(std::string& out, std::string_view value);

// Percent-encodes every byte but letters, digits and the given others.
std::string percentEncoded(std::string_view value, std::string_view plain);

} // namespace escape
