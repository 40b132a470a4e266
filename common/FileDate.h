#pragma once

#include <ctime>
#include <limits>
#include <string>

// The value for a status-change time that could not be read.
inline constexpr std::time_t kUnknownTime = std::numeric_limits<std::time_t>::min();

// Returns the status-change time of the file itself (lstat: a link is not followed). Returns kUnknownTime
// when lstat fails, with a line on standard error unless the file is missing.
std::time_t changeTime(const std::string& path);
// The same for a file in an open directory. path is the path of the directory, directory its descriptor or
// AT_FDCWD.
std::time_t changeTimeIn(const std::string& path, int directory, const char* fileName);

// Returns "YYYY-MM-DD hh:mm:ss" in local time. For kUnknownTime all digits are zero.
std::string formatDateTime(std::time_t time);
