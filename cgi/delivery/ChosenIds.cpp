#include "cgi/delivery/ChosenIds.h"

#include <algorithm>

#include "common/CCommUtils.h"

std::optional<ChosenIds> ChosenIds::ofRequest(const std::map<std::string, std::string>& query) {
    const auto value = query.find("rsltid");
    if (value == query.end())
        return std::nullopt;
    std::list<std::string> ids;
    CCommUtils::split(ids, ",", value->second);
    ChosenIds chosen;
    chosen.m_ids.insert(ids.begin(), ids.end());
    return chosen;
}

std::list<const _ResultInfo*> ChosenIds::choose(const std::list<_ResultInfo*>& results) const {
    std::list<const _ResultInfo*> chosen;
    std::copy_if(results.begin(), results.end(), std::back_inserter(chosen),
                 [this](const _ResultInfo* record) { return contains(record->id); });
    return chosen;
}
