#pragma once

#include <cstddef>
#include <memory>
#include <string>

class TiXmlDocument;

// The element, a child of the root, in which a file tells its advanced information. Letter case is ignored.
inline constexpr char kStoredInfoElement[] = "ktb_advinfo";

// What one request may spend on the files that it asks for their advanced information. 100,000 files of 4 kB
// are within it; no storage tree makes a request read for more than some seconds.
class CompanionBudget {
public:
    // False from the first time on that more is asked for than is left; that gets a line on standard error,
    // in which path is the file that it is for. Costs are those of xml::parseCost.
    bool spend(std::size_t cost, const std::string& path);

private:
    static constexpr std::size_t kAtFirst = std::size_t{512} * 1024 * 1024;

    std::size_t m_left = kAtFirst;
    bool m_isExhausted = false;
};

// The file at path, when it may tell advanced information; else null: when there is none in it, when it is no
// document or one of more than 1 MiB, or when the budget is spent. In silence but for the latter and failures
// of the system: any listed file can be asked.
std::unique_ptr<TiXmlDocument> loadCompanion(const std::string& path, CompanionBudget& budget);
