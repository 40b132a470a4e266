#include "cgi/delivery/ChosenIds.h"

#include <algorithm>
#include <iterator>

std::optional<ChosenIds> ChosenIds::of(const std::optional<std::list<std::string>>& ids) {
    if (!ids)
        return std::nullopt;
    ChosenIds chosen;
    chosen.m_ids.insert(ids->begin(), ids->end());
    return chosen;
}

std::list<const _ResultInfo*> ChosenIds::choose(const std::list<_ResultInfo*>& results) const {
    std::list<const _ResultInfo*> chosen;
    std::copy_if(results.begin(), results.end(), std::back_inserter(chosen),
                 [this](const _ResultInfo* record) { return contains(record->id); });
    return chosen;
}

std::list<std::string> ChosenIds::unknown(const std::list<const _ResultInfo*>& chosen) const {
    std::set<std::string> left = m_ids;
    for (const _ResultInfo* const record : chosen)
        left.erase(record->id);
    return {left.begin(), left.end()};
}
