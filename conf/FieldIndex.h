#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>

#include "common/CCommUtils.h"

// Finds the first record, in key order, whose field equals a text. Letter case is ignored. Between two calls
// the map may grow, but no record may be removed and the field of no record may change.
template<typename Record>
class FieldIndex {
public:
    using Map = std::map<std::string, Record>;

    explicit FieldIndex(std::string Record::*field) : m_field(field) {}

    // Returns null when no record matches.
    const Record* find(const Map& map, const std::string& text) {
        if (m_indexed != map.size())
            index(map);
        const auto found = m_first.find(CCommUtils::lowerCase(text));
        return found == m_first.end() ? nullptr : found->second;
    }

private:
    void index(const Map& map) {
        m_first.clear();
        for (const auto& [key, record] : map)
            m_first.emplace(CCommUtils::lowerCase(record.*m_field), &record);
        m_indexed = map.size();
    }

    std::string Record::*m_field;
    std::unordered_map<std::string, const Record*> m_first; // by the field in lower case
    std::size_t m_indexed = 0;                              // the size of the map when it was indexed
};
