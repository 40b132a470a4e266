#pragma once

#include <string_view>

// Returns the media type of a stored file by the ending of its name; letter case is ignored. It names no
// charset, because only the file itself can know it. For any other ending it is application/octet-stream.
std::string_view contentTypeOf(std::string_view path);
