#include "cgi/archive/PackedEndings.h"

#include <strings.h>

#include <algorithm>
#include <array>

namespace {

constexpr std::array<std::string_view, 19> kPackedEndings = {
    ".png", ".jpg", ".jpeg", ".gif", ".webp", ".zip", ".gz",  ".tgz", ".bz2", ".xz",
    ".zst", ".lz4", ".7z",   ".rar", ".pdf",  ".mp4", ".jar", ".ods", ".xlsx"};

} // namespace

bool hasPackedEnding(std::string_view name) {
    return std::any_of(kPackedEndings.begin(), kPackedEndings.end(), [name](std::string_view ending) {
        return name.size() >= ending.size() &&
               ::strncasecmp(name.data() + name.size() - ending.size(), ending.data(), ending.size()) == 0;
    });
}
