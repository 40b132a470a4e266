#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "conf/Companion.h"
#include "conf/ResultFilter.h"
#include "fileman/load/ActiveFilter.h"

// Tells whether an item passes the advanced part of the filter: its name, and what it says about itself. That
// is read only when it can decide, and once for each place.
class AdvancedFilter {
public:
    explicit AdvancedFilter(const ActiveFilter& filter) : m_filter(filter) {}

    // Whether the filter restricts nothing, something that the name tells, or something that the stored
    // information tells.
    enum class Needs { Nothing, Name, StoredInfo };
    Needs needs() const;

    // By the base name alone, for an item about which nothing is stored.
    bool passesByName(std::string_view baseName) const;
    // By the base name and by what is stored at path.
    bool passes(std::string_view baseName, const std::string& path);

    // The next question reads the disk again.
    void forget() {
        m_stored.clear();
        m_budget = CompanionBudget();
    }

private:
    const ActiveFilter& m_filter;
    std::unordered_map<std::string, _AdvanceInfo> m_stored; // by path, as far as read
    CompanionBudget m_budget;
};
