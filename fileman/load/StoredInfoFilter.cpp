#include "fileman/load/StoredInfoFilter.h"

#include "conf/CFileManConf.h"

namespace {

_AdvanceInfo named(std::string_view baseName) {
    _AdvanceInfo info;
    info.fileName = baseName;
    return info;
}

// The criteria that need only the name.
_AdvanceInfo nameCriteria(const _AdvanceInfo& criteria) {
    _AdvanceInfo ofName;
    ofName.prefix = criteria.prefix;
    ofName.fileName = criteria.fileName;
    ofName.suffix = criteria.suffix;
    return ofName;
}

} // namespace

StoredInfoFilter::Needs StoredInfoFilter::needs() const {
    const _AdvanceInfo& criteria = m_filter.fields().advanceInfo;
    if (!criteria.jobId.empty() || !criteria.account.empty() || isNone(criteria.locator) ||
        isNone(criteria.type))
        return Needs::StoredInfo;
    const bool isBlank = criteria.fileName.empty() && criteria.prefix.empty() && criteria.suffix.empty();
    return isBlank ? Needs::Nothing : Needs::Name;
}

bool StoredInfoFilter::passesByName(std::string_view baseName) const {
    return CFileManConf::advMatch(m_filter.fields().advanceInfo, named(baseName));
}

bool StoredInfoFilter::passes(std::string_view baseName, const std::string& path) {
    if (needs() != Needs::StoredInfo)
        return passesByName(baseName);
    const _AdvanceInfo& criteria = m_filter.fields().advanceInfo;
    // The name is tested first, so that a file with a wrong name is not opened.
    if (!CFileManConf::advMatch(nameCriteria(criteria), named(baseName)))
        return false;
    const auto [place, isNew] = m_stored.try_emplace(path);
    _AdvanceInfo& stored = place->second;
    if (isNew)
        stored = CFileManConf::getAdvInfo(_AdvanceInfo(), path, m_budget);
    stored.fileName = baseName;
    return CFileManConf::advMatch(criteria, stored);
}
