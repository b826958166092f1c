// Looks the keys of a hive up by parent and name, where going through siblings takes too long.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/hosted/registry/key_name.h"
#include "platform/memory.h"

namespace delvane {

// A hash table of keys that are numbered from 0. Names are found without regard to case, an exact match first; the
// owner gives the name of a key, as a text or a view.
class CKeyIndex {
public:
    bool IsMade() const { return !m_buckets.empty(); }
    // Empties the table and makes room for keys up to `count`.
    void Make(std::size_t count);
    void Add(std::uint32_t key, std::uint32_t parent, std::string_view name);
    // kNoKey where there is none.
    template <class NameOf>
    std::uint32_t Find(std::uint32_t parent, std::string_view name, const NameOf& nameOf) const {
        const std::uint32_t hash = HashOf(parent, name);
        std::uint32_t found = kNoKey;
        for (std::uint32_t key = m_buckets[hash & (m_buckets.size() - 1)]; key != kNoKey;
             key = m_entries[key].m_nNext) {
            if (m_entries[key].m_nHash != hash || m_entries[key].m_nParent != parent) continue;
            const auto& candidate = nameOf(key);
            if (candidate == name) return key;
            if (KeyNamesEqual(candidate, name)) found = key;
        }
        return found;
    }

    static constexpr std::uint32_t kNoKey = 0xFFFF'FFFF;
    // Look-ups may go from sibling to sibling until they have taken that many steps together; then it is worth it.
    static constexpr std::size_t kStepsWithout = 50'000;

private:
    struct CEntry {
        std::uint32_t m_nHash = 0;
        std::uint32_t m_nParent = 0;
        std::uint32_t m_nNext = 0;  // in the same bucket
    };

    // The same for names that are equal without regard to case.
    static std::uint32_t HashOf(std::uint32_t parent, std::string_view name);
    void Link(std::uint32_t key);

    CPageVector<CEntry> m_entries;         // by key
    std::vector<std::uint32_t> m_buckets;  // the first key of each; a power of two
};

}  // namespace delvane
