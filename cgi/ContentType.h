#pragma once

#include <string_view>

// The media type of a stored file by the ending of its name, in whatever letter case. A charset is not named:
// the file itself says it or nobody knows it. Any other ending: application/octet-stream.
std::string_view contentTypeOf(std::string_view path);
