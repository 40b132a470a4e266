#pragma once

#include <string>

#include "cgi/pages/CGICommonUtils.h"

namespace page {

// One line of a page behind so many tabs.
inline void line(std::size_t tabs, const std::string& html) {
    CGICommonUtils::writeHTMLine(std::string(tabs, '\t') + html);
}

} // namespace page
