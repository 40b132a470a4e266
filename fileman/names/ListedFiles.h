#pragma once

#include <string_view>

// Which file names are listed at all.
namespace listed {

// Whether the name ends in an extension of result files.
bool hasExtension(std::string_view fileName);

// The instrument's own saved last configuration, which most lists leave out.
bool isLastConfiguration(std::string_view fileName);

// The name up to its first dot.
inline std::string_view baseName(std::string_view fileName) {
    return fileName.substr(0, fileName.find('.'));
}

} // namespace listed
