#pragma once

#include <ctime>
#include <limits>
#include <string>

// Stands for a status-change time that nobody could tell.
inline constexpr std::time_t kUnknownTime = std::numeric_limits<std::time_t>::min();

// When the status of the file itself last changed (lstat: a link is not followed); kUnknownTime when lstat
// fails, with a line on standard error unless there is no such file.
std::time_t changeTime(const std::string& path);
// The same for a file of the directory at path, which is open or, for AT_FDCWD, the working directory.
std::time_t changeTimeIn(const std::string& path, int directory, const char* fileName);

// "YYYY-MM-DD hh:mm:ss" in local time, zeros in that shape for kUnknownTime.
std::string formatDateTime(std::time_t time);
