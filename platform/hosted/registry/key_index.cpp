#include "platform/hosted/registry/key_index.h"

#include <algorithm>
#include <bit>

namespace delvane {

void CKeyIndex::Make(std::size_t count) {
    m_buckets.assign(std::bit_ceil(std::max<std::size_t>(count, 16)), kNoKey);
    m_entries = {};
    m_entries.Resize(count);
}

void CKeyIndex::Add(std::uint32_t key, std::uint32_t parent, std::string_view name) {
    if (key >= m_entries.size()) m_entries.Resize(key + std::size_t{1});
    m_entries[key] = {HashOf(parent, name), parent, kNoKey};
    constexpr std::size_t kFullBucket = 4;
    if (key / kFullBucket > m_buckets.size()) {
        m_buckets.assign(m_buckets.size() * kFullBucket, kNoKey);
        for (std::uint32_t known = 0; known < key; ++known)
            Link(known);
    }
    Link(key);
}

void CKeyIndex::Link(std::uint32_t key) {
    std::uint32_t& bucket = m_buckets[m_entries[key].m_nHash & (m_buckets.size() - 1)];
    m_entries[key].m_nNext = bucket;
    bucket = key;
}

std::uint32_t CKeyIndex::HashOf(std::uint32_t parent, std::string_view name) {
    std::uint64_t hash = 0xCBF2'9CE4'8422'2325 ^ (parent * std::uint64_t{0x9E37'79B9'7F4A'7C15});
    const auto add = [&hash](unsigned char c) { hash = (hash ^ c) * 0x0000'0100'0000'01B3; };
    const bool isAscii = std::all_of(name.begin(), name.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
    if (isAscii) {
        for (const char c : name)
            add(static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c));
    } else {
        for (const char c : FoldKeyName(name))
            add(static_cast<unsigned char>(c));
    }
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

}  // namespace delvane
