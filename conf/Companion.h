#pragma once

#include <cstddef>
#include <memory>
#include <string>

class TiXmlDocument;

// The child element of the root in which a file stores its advanced information. Letter case is ignored.
inline constexpr char kStoredInfoElement[] = "ktb_advinfo";

// Limits the work of one request on files that may store advanced information. 100,000 files of 4 kB are
// within the limit. So no storage tree can make a request read for more than a few seconds.
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

// Parses the file at path if it may store advanced information. Returns null when it stores none, is not an
// XML document, has more than 1 MiB, or when the budget is spent. Only a spent budget and failures of the
// system are reported: the caller may pass any listed file.
std::unique_ptr<TiXmlDocument> loadCompanion(const std::string& path, CompanionBudget& budget);
