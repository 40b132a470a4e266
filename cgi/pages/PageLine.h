#pragma once

#include <string>

#include "cgi/answer/Answers.h"
#include "cgi/pages/CGICommonUtils.h"

namespace page {

// Writes one line of a page, indented by this number of tabs.
inline void line(std::size_t tabs, const std::string& html) {
    CGICommonUtils::writeHTMLine(std::string(tabs, '\t') + html);
}

// The text of a line that differs between the two kinds of answers.
inline const char* either(const char* inDefault, const char* inStrict) {
    return Answers::current().areStrict() ? inStrict : inDefault;
}

// Writes a line that only default answers have: strict answers contain no inline code or style and no
// libraries.
inline void defaultLine(std::size_t tabs, const std::string& html) {
    if (!Answers::current().areStrict())
        line(tabs, html);
}

inline void strictLine(std::size_t tabs, const std::string& html) {
    if (Answers::current().areStrict())
        line(tabs, html);
}

// Returns a value for the text or an attribute of a page.
inline std::string value(const std::string& stored) {
    return Answers::current().inHtml(stored);
}

} // namespace page
