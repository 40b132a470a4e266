#pragma once

#include <string>

#include "cgi/pages/CGICommonUtils.h"

namespace page {

// Writes one line of a page, indented by this number of tabs.
inline void line(std::size_t tabs, const std::string& html) {
    CGICommonUtils::writeHTMLine(std::string(tabs, '\t') + html);
}

} // namespace page
