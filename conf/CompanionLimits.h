#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

// A larger file, in bytes, counts as one without advanced information.
inline constexpr off_t kLargestCompanion = off_t{1} * 1024 * 1024;

// Limits the work of one request (CFileManConf::getAdvInfo) on files that may store advanced information.
// 100,000 files of 4 kB are within the limit. So no storage tree can make a request read for more than a few
// seconds.
class CompanionBudget {
public:
    // Takes cost, in units of xml::parseCost, from the budget for the file at path. Returns false when less
    // is left, and in every later call. The first time it also writes a line on standard error.
    bool spend(std::size_t cost, const std::string& path);

private:
    static constexpr std::size_t kAtFirst = std::size_t{512} * 1024 * 1024;

    std::size_t m_left = kAtFirst;
    bool m_isExhausted = false;
};
