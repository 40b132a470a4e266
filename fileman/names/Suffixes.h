#pragma once

#include <string>
#include <string_view>

#include "common/CCommUtils.h"

// The endings of port directories and type directories. Some rules cut the length of one ending from a name
// that has another ending; a comment there says so.
namespace suffix {

inline constexpr std::string_view kPort = "port";
inline constexpr std::string_view kPort2 = "port2";

inline constexpr std::string_view kResult = "-result";
inline constexpr std::string_view kSetup = "-setup";
inline constexpr std::string_view kTrace = "-trace";
inline constexpr std::string_view kMpeg = "-mpeg";
inline constexpr std::string_view kRslt = "-rslt";
inline constexpr std::string_view kProf = "-prof";
inline constexpr std::string_view kRtd = "-rtd";

// The companion directories of reports, which contain their pictures.
inline constexpr std::string_view kFiles = "_files";

// Returns the name without its last bytes, as many as the suffix has. It does not compare the ending.
inline std::string cut(const std::string& name, std::string_view suffix) {
    return CCommUtils::cutLast(name, suffix.size());
}

} // namespace suffix
