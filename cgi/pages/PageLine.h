#pragma once

#include <string>

#include "cgi/Answers.h"
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

// A line that only default answers have: strict ones hold no code, no style and no libraries of others.
inline void defaultLine(std::size_t tabs, const std::string& html) {
    if (!Answers::current().areStrict())
        line(tabs, html);
}

inline void strictLine(std::size_t tabs, const std::string& html) {
    if (Answers::current().areStrict())
        line(tabs, html);
}

// A value in the text or in an attribute of a page.
inline std::string value(const std::string& stored) {
    return Answers::current().inHtml(stored);
}

// What a strict page has in its head beside the lines of both kinds; nothing in default answers.
void writeMeta();

// What a strict page tells the person when a part of the storage could not be read.
void writeIncompleteNotice();

} // namespace page
