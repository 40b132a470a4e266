#include <array>
#include <optional>
#include <utility>

#include "cgi/CFileManCGI.h"
#include "cgi/StrictQuery.h"
#include "cgi/answer/Answers.h"
#include "cgi/delivery/ChosenIds.h"
#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"

namespace {

using QueryMap = std::map<std::string, std::string>;

struct ActionWord {
    const char* key;
    const char* value;
    unsigned action;
};

// The first row that matches the query decides. The order of these rows counts, not the order of the keys in
// the request.
constexpr std::array<ActionWord, 9> kActionWords = {{
    {"filter", "fpri", CFileManCGI::ACTION_PRIMARY_FILTER},
    {"filter", "fadv", CFileManCGI::ACTION_ADVANCED_FILTER},
    {"fmtype", "all", CFileManCGI::ACTION_LIST_ALL},
    {"fmtype", "prof", CFileManCGI::ACTION_LIST_PROFILES},
    {"fmtype", "rslt", CFileManCGI::ACTION_LIST_RESULTS},
    {"fmtype", "screen", CFileManCGI::ACTION_LIST_SCREENSHOTS},
    {"opertype", "view", CFileManCGI::ACTION_VIEW},
    {"opertype", "pdf", CFileManCGI::ACTION_PDF},
    {"opertype", "download", CFileManCGI::ACTION_DOWNLOAD},
}};

struct SourceWord {
    const char* value;
    bool results;
    bool profiles;
};

// What each value of "fmtype" lists. Any other value lists neither results nor profiles.
constexpr std::array<SourceWord, 4> kSourceWords = {{
    {"all", true, true},
    {"prof", false, true},
    {"rslt", true, false},
    {"screen", true, true},
}};

struct FormatWord {
    const char* value;
    CFileManCGI::ListFormat format;
};

constexpr std::array<FormatWord, 2> kFormatWords = {{
    {"jsonl", CFileManCGI::ListFormat::JsonLines},
    {"csv", CFileManCGI::ListFormat::Csv},
}};

struct ListKey {
    const char* key;
    std::list<std::string> _ResultFilter::*field;
};

constexpr std::array<ListKey, 4> kListKeys = {{
    {"module", &_ResultFilter::modules},
    {"mode", &_ResultFilter::modes},
    {"test", &_ResultFilter::tests},
    {"port", &_ResultFilter::ports},
}};

struct TextKey {
    const char* key;
    std::string _AdvanceInfo::*field;
};

constexpr std::array<TextKey, 7> kTextKeys = {{
    {"jobid", &_AdvanceInfo::jobId},
    {"account", &_AdvanceInfo::account},
    {"locator", &_AdvanceInfo::locator},
    {"type", &_AdvanceInfo::type},
    {"fname", &_AdvanceInfo::fileName},
    {"prefix", &_AdvanceInfo::prefix},
    {"suffix", &_AdvanceInfo::suffix},
}};

const std::string* findValue(const QueryMap& query, const char* key) {
    const auto found = query.find(key);
    return found == query.end() ? nullptr : &found->second;
}

void readSources(_ResultFilter& filter, const std::string& value) {
    filter.includeResults = false;
    filter.includeProfiles = false;
    for (const SourceWord& word : kSourceWords) {
        if (!CCommUtils::isEquals(value, word.value))
            continue;
        filter.includeResults = word.results;
        filter.includeProfiles = word.profiles;
    }
}

} // namespace

int CFileManCGI::parseQueryInfo(const char* query) {
    return CCommUtils::parseQueryInfo(m_queryInfo, query);
}

bool CFileManCGI::parseKeyValue(const std::string& pair) {
    return CCommUtils::parseKeyValue(m_queryInfo, pair);
}

bool CFileManCGI::readQuery(const char* encoded) {
    std::optional<StrictQuery> query = StrictQuery::read(encoded);
    if (!query)
        return false;
    m_queryInfo = std::move(query->values);
    m_queryLists = std::move(query->lists);
    return true;
}

std::optional<std::list<std::string>> CFileManCGI::getQueryList(const std::string& key) const {
    if (const auto cut = m_queryLists.find(key); cut != m_queryLists.end())
        return cut->second;
    const std::string* const value = findValue(m_queryInfo, key.c_str());
    if (value == nullptr)
        return std::nullopt;
    std::list<std::string> pieces;
    CCommUtils::split(pieces, ",", *value);
    return pieces;
}

unsigned CFileManCGI::getFileManType() const {
    for (const ActionWord& word : kActionWords) {
        const std::string* const value = findValue(m_queryInfo, word.key);
        if (value != nullptr && CCommUtils::isEquals(*value, word.value))
            return word.action;
    }
    return ACTION_REQUEST_INFO;
}

std::string CFileManCGI::getFileManTypeString() const {
    const std::string* const value = findValue(m_queryInfo, "fmtype");
    return value == nullptr ? std::string() : *value;
}

std::optional<CFileManCGI::ListFormat> CFileManCGI::getListFormat() const {
    const std::string* const value = findValue(m_queryInfo, "format");
    if (value == nullptr || !Answers::current().areStrict())
        return ListFormat::Page;
    for (const FormatWord& word : kFormatWords) {
        if (CCommUtils::isEquals(*value, word.value))
            return word.format;
    }
    return std::nullopt;
}

std::function<bool(const std::string& id)> CFileManCGI::getChooser() const {
    return [ids = ChosenIds::of(getQueryList("rsltid"))](const std::string& id) {
        return ids && ids->contains(id);
    };
}

void CFileManCGI::getFilterFromRequest(_ResultFilter& filter) {
    if (const std::string* const value = findValue(m_queryInfo, "fmtype"))
        readSources(filter, *value);
    for (const ListKey& row : kListKeys) {
        if (std::optional<std::list<std::string>> names = getQueryList(row.key)) {
            std::list<std::string>& field = filter.*row.field;
            field.splice(field.end(), *names);
        }
    }
    for (const TextKey& row : kTextKeys) {
        if (const std::string* const value = findValue(m_queryInfo, row.key))
            filter.advanceInfo.*row.field = *value;
    }
    CFileManConf::copyFilter(m_filter, filter);
}
