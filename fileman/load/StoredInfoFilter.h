#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "conf/CompanionLimits.h"
#include "conf/ResultFilter.h"
#include "fileman/load/ActiveFilter.h"

// Decides whether the information stored about a file must be read to know that the file passes the advanced
// filter, and remembers what was read for each path. Whether the file passes: conf/AdvancedMatch.cpp.
class StoredInfoFilter {
public:
    explicit StoredInfoFilter(const ActiveFilter& filter) : m_filter(filter) {}

    // What the filter needs for its decision: nothing, only the name, or also the stored information.
    enum class Needs { Nothing, Name, StoredInfo };
    Needs needs() const;

    // Decides by the base name alone. For a file without stored information.
    bool passesByName(std::string_view baseName) const;
    // Decides by the base name and by the information stored at path.
    bool passes(std::string_view baseName, const std::string& path);

    // Forgets what was read: the next question reads the disk again.
    void forget() {
        m_stored.clear();
        m_budget = CompanionBudget();
    }

private:
    const ActiveFilter& m_filter;
    std::unordered_map<std::string, _AdvanceInfo> m_stored; // what was read so far, by path
    CompanionBudget m_budget;
};
