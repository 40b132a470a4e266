#include "conf/Companion.h"

#include <tinyxml.h>

#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "common/Report.h"
#include "conf/AdvancedMatch.h"
#include "conf/CFileManConf.h"
#include "conf/CompanionLimits.h"
#include "conf/xml/XmlFile.h"
#include "conf/xml/XmlLimits.h"

namespace {

// The child element of the root in which a file stores its advanced information. Letter case is ignored.
constexpr char kStoredInfoElement[] = "ktb_advinfo";

// Reading and searching this many bytes costs one unit of the budget.
constexpr std::size_t kBytesReadPerUnit = 8;

// For a file of this size or less, parsing takes hardly longer than the search for the element's name.
constexpr std::size_t kFewBytes = 1024;

// Returns the content if it may contain the element and must be parsed.
std::optional<std::string> readCompanion(const std::string& path, CompanionBudget& budget,
                                         xml::Failure& failure) {
    std::optional<std::string> content = xml::readContent(path, kLargestCompanion, failure);
    if (!content || !budget.spend(content->size() / kBytesReadPerUnit, path))
        return std::nullopt;
    const bool mayTell =
        content->size() < kFewBytes || ::strcasestr(content->c_str(), kStoredInfoElement) != nullptr;
    if (!mayTell || !budget.spend(xml::parseCost(*content), path))
        return std::nullopt;
    return content;
}

// Parses the file at path if it may store advanced information. Returns null when it stores none, is not an
// XML document, is too large, or when the budget is spent. Only a spent budget and failures of the
// system are reported: the caller may pass any listed file.
std::unique_ptr<TiXmlDocument> loadCompanion(const std::string& path, CompanionBudget& budget) {
    xml::Failure failure;
    std::optional<std::string> content = readCompanion(path, budget, failure);
    auto document = content ? std::make_unique<TiXmlDocument>() : nullptr;
    if (document && !xml::parse(*document, std::move(*content), failure))
        document.reset();
    if (failure.errorNumber != 0)
        reportUnlessAbsent("read document", path, failure.errorNumber);
    return document;
}

void readStored(_AdvanceInfo& info, const TiXmlElement& element) {
    info.jobId = xml::attribute(element, "job_id");
    info.account = xml::attribute(element, "account_id");
    info.locator = xml::attribute(element, "locator");
    info.type = xml::attribute(element, "advtype");
    info.prefix = xml::attribute(element, "prefix");
    info.suffix = xml::attribute(element, "suffix");
    info.hasAdvance = !isBlank(info);
}

} // namespace

std::string storedInfoName(StoredInfo kind, std::string_view fileName, std::string_view base) {
    switch (kind) {
    case StoredInfo::Plain:
        return std::string(base);
    case StoredInfo::Companion:
        return std::string(base) + ".xml";
    case StoredInfo::Itself:
        break;
    }
    return std::string(fileName);
}

_AdvanceInfo CFileManConf::getAdvInfo(_AdvanceInfo info, const std::string& path) {
    CompanionBudget budget;
    return getAdvInfo(std::move(info), path, budget);
}

_AdvanceInfo CFileManConf::getAdvInfo(_AdvanceInfo info, const std::string& path,
                                      CompanionBudget& budget) try {
    info.hasAdvance = false;
    const std::unique_ptr<TiXmlDocument> document = loadCompanion(path, budget);
    if (!document)
        return info;
    xml::forEachChild(*document->RootElement(), [&](const TiXmlElement& child) {
        if (xml::isNamed(child, kStoredInfoElement))
            readStored(info, child);
    });
    return info;
} catch (const std::string&) {
    return info;
}
