#pragma once

#include <string_view>

// Rules for the names of listed files.
namespace listed {

// Whether the name has one of the extensions of result files.
bool hasExtension(std::string_view fileName);

// Whether it is the instrument's own saved last configuration, which most lists leave out.
bool isLastConfiguration(std::string_view fileName);

// Returns the name up to its first dot.
inline std::string_view baseName(std::string_view fileName) {
    return fileName.substr(0, fileName.find('.'));
}

} // namespace listed
