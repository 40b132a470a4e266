#include "conf/Companion.h"

#include <tinyxml.h>

#include <cstring>
#include <optional>
#include <utility>

#include "common/Report.h"
#include "conf/XmlFile.h"
#include "conf/XmlLimits.h"

namespace {

constexpr char kTask[] = "read document";

// Reading and searching this many bytes costs one unit of the budget.
constexpr std::size_t kBytesReadPerUnit = 8;

// For a file of this size or less, parsing takes hardly longer than the search for the element's name.
constexpr std::size_t kFewBytes = 1024;

// Returns the content if it may contain the element and must be parsed.
std::optional<std::string> readCompanion(const std::string& path, CompanionBudget& budget,
                                         xml::Failure& failure) {
    std::optional<std::string> content = xml::readContent(path, xml::kLargestCompanion, failure);
    if (!content || !budget.spend(content->size() / kBytesReadPerUnit, path))
        return std::nullopt;
    const bool mayTell =
        content->size() < kFewBytes || ::strcasestr(content->c_str(), kStoredInfoElement) != nullptr;
    if (!mayTell || !budget.spend(xml::parseCost(*content), path))
        return std::nullopt;
    return content;
}

} // namespace

bool CompanionBudget::spend(std::size_t cost, const std::string& path) {
    if (m_isExhausted)
        return false;
    m_isExhausted = cost > m_left;
    if (m_isExhausted)
        report(kTask, path, "too much to read for one request, this and what follows counts as empty");
    else
        m_left -= cost;
    return !m_isExhausted;
}

std::unique_ptr<TiXmlDocument> loadCompanion(const std::string& path, CompanionBudget& budget) {
    xml::Failure failure;
    std::optional<std::string> content = readCompanion(path, budget, failure);
    auto document = content ? std::make_unique<TiXmlDocument>() : nullptr;
    if (document && !xml::parse(*document, std::move(*content), failure))
        document.reset();
    if (failure.errorNumber != 0)
        reportUnlessAbsent(kTask, path, failure.errorNumber);
    return document;
}
