#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <unordered_map>
#include <vector>

#include "common/CCommUtils.h"
#include "conf/ConfRecords.h"

// Finds the extra directories of a module's mode, both without regard to letter case, in list order: each
// mode asks, and a document may declare 100,000. The list may grow between two calls, but nothing goes.
class ExtraDirIndex {
public:
    using Group = std::vector<const ExtraDirInfo*>;

    const Group& find(const std::list<ExtraDirInfo>& list, const std::string& module,
                      const std::string& mode) {
        static const Group kNone;
        if (m_indexed != list.size())
            index(list);
        const auto found = m_groups.find({module, mode});
        return found == m_groups.end() ? kNone : found->second;
    }

private:
    struct Key {
        const std::string& module;
        const std::string& mode;

        bool operator==(const Key& other) const {
            return CCommUtils::isEquals(module, other.module) && CCommUtils::isEquals(mode, other.mode);
        }
    };
    struct Hash {
        std::size_t operator()(const Key& key) const { return add(add(kSeed, key.module), key.mode); }

    private:
        static constexpr std::size_t kSeed = 0x811c9dc5;
        static constexpr std::size_t kFactor = 0x01000193;
        static constexpr unsigned kLetterCase = 0x20; // the bit in which 'A' and 'a' differ

        static std::size_t add(std::size_t hash, const std::string& text) {
            for (const char c : text)
                hash = (hash ^ (static_cast<unsigned char>(c) | kLetterCase)) * kFactor;
            return hash;
        }
    };

    void index(const std::list<ExtraDirInfo>& list) {
        m_groups.clear();
        for (const ExtraDirInfo& extra : list)
            m_groups[{extra.module, extra.mode}].push_back(&extra);
        m_indexed = list.size();
    }

    std::unordered_map<Key, Group, Hash> m_groups;
    std::size_t m_indexed = 0; // how many directories the list had
};
