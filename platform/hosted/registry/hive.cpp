#include "platform/hosted/registry/hive.h"

#include <bit>

#include "platform/own_file.h"

namespace delvane {
namespace {

// The same for names that are equal without regard to case.
std::uint32_t HashOf(std::uint32_t parent, std::string_view name) {
    const std::uint64_t hash =
        std::hash<std::string>()(FoldKeyName(name)) ^ (parent * std::uint64_t{0x9E37'79B9'7F4A'7C15});
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

}  // namespace

std::optional<std::uint32_t> CHive::FindSubkey(std::uint32_t key, std::string_view name) {
    std::uint32_t found = 0;
    const auto isExact = [&](std::uint32_t candidate) {
        const std::string candidateName = NameOf(candidate);
        if (KeyNamesEqual(candidateName, name) && (found == 0 || candidate < found)) found = candidate;
        return candidateName == name;
    };
    if (m_buckets.empty()) {
        for (std::uint32_t subkey = FirstSubkey(key); subkey != 0; subkey = NextSubkey(subkey)) {
            ++m_nSteps;
            if (isExact(subkey)) return subkey;
        }
        constexpr std::size_t kStepsWithout = 50'000;
        if (m_nSteps > kStepsWithout) MakeIndex();
    } else {
        const std::uint32_t hash = HashOf(key, name);
        for (std::uint32_t at = m_buckets[hash & (m_buckets.size() - 1)]; at != 0; at = m_entries[at].m_nNext) {
            const bool mayBe = m_entries[at].m_nHash == hash && m_entries[at].m_nParent == key;
            if (mayBe && isExact(at)) return at;
        }
    }
    return found == 0 ? std::nullopt : std::optional(found);
}

void CHive::MakeIndex() {
    m_entries.Resize(CountKeys());
    for (std::uint32_t parent = 0; parent < m_entries.size(); ++parent) {
        for (std::uint32_t subkey = FirstSubkey(parent); subkey != 0; subkey = NextSubkey(subkey))
            m_entries[subkey] = {HashOf(parent, NameOf(subkey)), parent, 0};
    }
    LinkEntries(1);
}

// Puts the entries from that one on into their buckets, or all into more buckets where these are too full.
void CHive::LinkEntries(std::uint32_t first) {
    constexpr std::size_t kFullBucket = 4;
    if (m_buckets.size() * kFullBucket < m_entries.size()) {
        m_buckets.assign(std::bit_ceil(m_entries.size()), 0);
        first = 1;
    }
    for (std::uint32_t key = first; key < m_entries.size(); ++key) {
        std::uint32_t& bucket = m_buckets[m_entries[key].m_nHash & (m_buckets.size() - 1)];
        m_entries[key].m_nNext = bucket;
        bucket = key;
    }
}

void CHive::NoteNewKey(std::uint32_t parent, std::string_view name) {
    if (m_buckets.empty()) return;
    m_entries.push_back({HashOf(parent, name), parent, 0});
    LinkEntries(static_cast<std::uint32_t>(m_entries.size() - 1));
}

bool ReadHiveFile(const std::string& hostPath, std::uint64_t limit, CFileBytes& bytes, CNotice& problem) {
    try {
        bytes = ReadOwnFile(hostPath, hostPath, limit, false);
        return true;
    } catch (const CFileError& error) {
        const bool isPlain = error.GetCode() == ERROR_FILE_NOT_FOUND || error.GetCode() == ERROR_ACCESS_DENIED;
        problem = {error.what(), hostPath, isPlain ? error.GetCode() : ERROR_REGISTRY_IO_FAILED};
        return false;
    }
}

}  // namespace delvane
