#pragma once

#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "fileman/ResultInfo.h"

// The ids that a request names in its key "rsltid": which records it is about.
class ChosenIds {
public:
    // Nothing for a request without the key.
    static std::optional<ChosenIds> ofRequest(const std::map<std::string, std::string>& query);

    bool contains(const std::string& id) const { return m_ids.count(id) != 0; }
    // The chosen records in the order of results.
    std::list<const _ResultInfo*> choose(const std::list<_ResultInfo*>& results) const;

private:
    std::set<std::string> m_ids;
};
