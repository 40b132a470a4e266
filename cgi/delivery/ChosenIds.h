#pragma once

#include <list>
#include <optional>
#include <set>
#include <string>

#include "fileman/ResultInfo.h"

// The ids that a request names in its key "rsltid". They choose the records that the request is about.
class ChosenIds {
public:
    // ids: the pieces of the key's value. Returns nullopt for a request without the key.
    static std::optional<ChosenIds> of(const std::optional<std::list<std::string>>& ids);

    bool contains(const std::string& id) const { return m_ids.count(id) != 0; }
    // Returns the chosen records in the order of results.
    std::list<const _ResultInfo*> choose(const std::list<_ResultInfo*>& results) const;

    // Returns the ids that none of the chosen records has.
    std::list<std::string> unknown(const std::list<const _ResultInfo*>& chosen) const;

private:
    std::set<std::string> m_ids;
};
