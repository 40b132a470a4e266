#pragma once

#include <algorithm>
#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

// A list of names without duplicates, in the order in which they were first added. It has an index, because
// some callers look for a name once for each directory of a tree, and the list may hold thousands.
class NameSet {
public:
    NameSet() = default;
    explicit NameSet(const std::list<std::string>& names) {
        m_index.reserve(names.size());
        for (const std::string& name : names)
            add(name);
    }
    // Not copied, because the index points into the names.
    NameSet(const NameSet&) = delete;
    NameSet& operator=(const NameSet&) = delete;
    NameSet(NameSet&&) = default;
    NameSet& operator=(NameSet&&) = default;
    ~NameSet() = default;

    // Returns false when the list already has the name.
    bool add(const std::string& name) {
        if (contains(name))
            return false;
        m_names.push_back(name);
        if (m_names.size() == kFew + 1)
            m_index.insert(m_names.begin(), m_names.end());
        else if (m_names.size() > kFew)
            m_index.insert(m_names.back());
        return true;
    }

    bool contains(std::string_view name) const {
        return m_names.size() > kFew ? m_index.count(name) != 0
                                     : std::find(m_names.begin(), m_names.end(), name) != m_names.end();
    }
    bool empty() const { return m_names.empty(); }
    const std::list<std::string>& names() const { return m_names; }
    void clear() { *this = NameSet(); }

private:
    // A walk through this many names is faster than one lookup in the index.
    static constexpr std::size_t kFew = 8;

    std::list<std::string> m_names;
    std::unordered_set<std::string_view> m_index; // empty up to kFew names
};
