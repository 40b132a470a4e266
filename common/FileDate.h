#pragma once

#include <ctime>
#include <limits>
#include <string>

// Stands for a status-change time that nobody could tell.
inline constexpr std::time_t kUnknownTime = std::numeric_limits<std::time_t>::min();

// When the status of the file itself last changed (lstat: a link is not followed); kUnknownTime when lstat
// fails.
std::time_t changeTime(const char* path);
// The same for a path relative to an open directory, as fstatat(2) has it.
std::time_t changeTimeAt(int directory, const char* path);

// "YYYY-MM-DD hh:mm:ss" in local time, zeros in that shape for kUnknownTime.
std::string formatDateTime(std::time_t time);
