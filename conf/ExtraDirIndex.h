#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <unordered_map>
#include <vector>

#include "common/CCommUtils.h"
#include "conf/ConfRecords.h"

// Finds the extra directories of a module's mode, in list order. Letter case of both names is ignored. An
// index is needed because every mode looks for its own directories, and a document may declare 100,000.
// Between two calls the list may grow, but no entry may be removed.
class ExtraDirIndex {
public:
    using Group = std::vector<const ExtraDirInfo*>;

    const Group& find(const std::list<ExtraDirInfo>& list, const std::string& module,
                      const std::string& mode) {
        static const Group kNone;
        if (m_indexed != list.size())
            index(list);
        const auto found = m_groups.find(keyOf(module, mode));
        return found == m_groups.end() ? kNone : found->second;
    }

private:
    // The zero byte separates the two names, because no value of a document contains one.
    static std::string keyOf(const std::string& module, const std::string& mode) {
        return CCommUtils::lowerCase(module).append(1, '\0').append(CCommUtils::lowerCase(mode));
    }

    void index(const std::list<ExtraDirInfo>& list) {
        m_groups.clear();
        for (const ExtraDirInfo& extra : list)
            m_groups[keyOf(extra.module, extra.mode)].push_back(&extra);
        m_indexed = list.size();
    }

    std::unordered_map<std::string, Group> m_groups;
    std::size_t m_indexed = 0; // the length of the list when it was indexed
};
