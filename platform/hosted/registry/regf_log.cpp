// A log begins with a copy of the hive's base block.
//
// The older form goes on with "DIRT" and a bit for each sector of the hive's cells; the sectors that are marked follow,
// from the next whole sector on.
//
// The newer form goes on with entries: "HvLE", size, flags, sequence number, size of the hive's cells, number of pages,
// a hash of what follows, a hash of the 32 bytes so far; then offset and size of each page, then the pages.
#include <algorithm>
#include <bit>
#include <map>
#include <optional>

#include "platform/hosted/registry/regf.h"

namespace delvane {

using namespace regf;

namespace {

constexpr std::size_t kEntryHead = 40;
constexpr std::size_t kEntrySize = 4;
constexpr std::size_t kEntrySequence = 12;
constexpr std::size_t kEntryCellsSize = 16;
constexpr std::size_t kEntryPages = 20;
constexpr std::size_t kEntryHash1 = 24;
constexpr std::size_t kEntryHash2 = 32;

// An entry that is whole, or nothing.
std::optional<std::string_view> EntryAt(std::string_view log, std::size_t at) {
    if (at > log.size() || log.size() - at < kEntryHead) return std::nullopt;
    std::string_view entry = log.substr(at);
    const std::size_t size = U32(entry, kEntrySize);
    if (!entry.starts_with("HvLE") || size < kEntryHead || size > entry.size()) return std::nullopt;
    entry = entry.substr(0, size);
    if (HashOfLog(entry.substr(0, kEntryHash2)) != U64(entry, kEntryHash2)) return std::nullopt;
    if (HashOfLog(entry.substr(kEntryHead)) != U64(entry, kEntryHash1)) return std::nullopt;
    return entry;
}

struct CPage {
    std::size_t m_nOffset;
    std::string_view m_bytes;
};

// The pages of an entry or a log, and the size of the cells with them.
struct CChanges {
    std::size_t m_nCellsSize = 0;
    std::vector<CPage> m_pages;
};

// Nothing where the pages do not lie within the entry and the hive.
std::optional<CChanges> ChangesOf(std::string_view entry) {
    CChanges changes;
    changes.m_nCellsSize = U32(entry, kEntryCellsSize);
    const std::size_t count = U32(entry, kEntryPages);
    if (count > (entry.size() - kEntryHead) / 8) return std::nullopt;
    std::size_t bytesAt = kEntryHead + count * 8;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t offset = U32(entry, kEntryHead + i * 8);
        const std::size_t size = U32(entry, kEntryHead + i * 8 + 4);
        if (size > entry.size() - bytesAt || offset + size > changes.m_nCellsSize) return std::nullopt;
        changes.m_pages.push_back({offset, entry.substr(bytesAt, size)});
        bytesAt += size;
    }
    return changes;
}

std::optional<CChanges> OldChangesOf(std::string_view log) {
    CChanges changes;
    changes.m_nCellsSize = U32(log, kCellsSize);
    constexpr std::string_view kMark = "DIRT";
    const std::size_t sectors = changes.m_nCellsSize / kSector;
    const std::size_t bitsAt = kBaseHead + kMark.size();
    if (log.substr(kBaseHead, kMark.size()) != kMark || log.size() < bitsAt + (sectors + 7) / 8) return std::nullopt;
    std::size_t bytesAt = (bitsAt + (sectors + 7) / 8 + kSector - 1) / kSector * kSector;
    for (std::size_t sector = 0; sector < sectors; ++sector) {
        const auto bits = static_cast<unsigned char>(log[bitsAt + sector / 8]);
        if ((bits >> sector % 8 & 1) == 0) continue;
        if (bytesAt > log.size() || log.size() - bytesAt < kSector) return std::nullopt;
        changes.m_pages.push_back({sector * kSector, log.substr(bytesAt, kSector)});
        bytesAt += kSector;
    }
    return changes;
}

// A hive that grows does so by pages that a log holds; a larger claim is not believed.
bool Apply(CFileBytes& hive, const CChanges& changes, std::size_t largest) {
    std::size_t end = 0;
    for (const CPage& page : changes.m_pages)
        end = std::max(end, kBaseBlock + page.m_nOffset + page.m_bytes.size());
    if (end > largest) return false;
    if (end > hive.m_nSize) {
        if (end > hive.m_buffer.GetSize()) {
            CPageBuffer larger(largest);
            std::memcpy(larger.GetData(), hive.m_buffer.GetData(), hive.m_nSize);
            hive.m_buffer = std::move(larger);
        }
        hive.m_nSize = end;
    }
    for (const CPage& page : changes.m_pages)
        std::memcpy(hive.m_buffer.GetData() + kBaseBlock + page.m_nOffset, page.m_bytes.data(), page.m_bytes.size());
    for (unsigned i = 0; i < 4; ++i)
        hive.m_buffer.GetData()[kCellsSize + i] = static_cast<char>(changes.m_nCellsSize >> 8 * i);
    return true;
}

bool IsNewForm(std::string_view log) { return U32(log, kFileType) == 6; }

// The entries of all logs by their sequence numbers.
struct CEntries {
    std::map<std::uint32_t, std::string_view> m_entries;
    std::uint32_t m_nLastLost = 0;  // the last one behind an entry that is not whole; 0 if there is none
};

// Within a log they count up; behind its last entry older ones may still stand.
CEntries EntriesOf(const std::vector<CFileBytes>& logs) {
    CEntries entries;
    for (const CFileBytes& log : logs) {
        const std::string_view bytes = log.GetBytes();
        if (!IsBaseBlock(bytes) || !IsNewForm(bytes)) continue;
        std::optional<std::uint32_t> last;
        std::size_t at = kBaseHead;
        for (auto entry = EntryAt(bytes, at); entry; entry = EntryAt(bytes, at)) {
            const std::uint32_t sequence = U32(*entry, kEntrySequence);
            if (last && sequence != *last + 1) break;
            entries.m_entries.emplace(sequence, *entry);
            last = sequence;
            at += entry->size();
        }
        for (; last && at < bytes.size(); at += kSector) {
            const auto entry = EntryAt(bytes, at);
            if (entry && U32(*entry, kEntrySequence) > *last) {
                entries.m_nLastLost = std::max(entries.m_nLastLost, U32(*entry, kEntrySequence));
            }
        }
    }
    return entries;
}

// The log whose base block stands in for a damaged one: that with the latest changes.
const CFileBytes* FindBaseBlock(const std::vector<CFileBytes>& logs) {
    const CFileBytes* best = nullptr;
    for (const CFileBytes& log : logs) {
        if (!IsBaseBlock(log.GetBytes())) continue;
        if (best == nullptr || U32(log.GetBytes(), kSequence2) > U32(best->GetBytes(), kSequence2)) best = &log;
    }
    return best;
}

}  // namespace

std::uint64_t HashOfLog(std::string_view bytes) {
    std::uint32_t low = 0x7A4E'55C5;
    std::uint32_t high = 0x82EF'4D88;
    const auto mix = [&](std::uint32_t word) {
        low += word;
        high ^= low;
        low = std::rotl(low, 20) + high;
        high = std::rotl(high, 9) ^ low;
        low = std::rotl(low, 27) + high;
        high = std::rotl(high, 19);
    };
    std::size_t at = 0;
    for (; at + 4 <= bytes.size(); at += 4)
        mix(U32(bytes, at));
    std::uint32_t last = 0x80;
    for (std::size_t i = bytes.size(); i-- > at;)
        last = last << 8 | static_cast<unsigned char>(bytes[i]);
    mix(last);
    mix(0);
    return static_cast<std::uint64_t>(high) << 32 | low;
}

bool ReplayLogs(CFileBytes& hive, const std::vector<CFileBytes>& logs) {
    if (hive.m_nSize < kBaseBlock) return true;  // no hive at all, as its reader will say
    const bool hasBase = IsBaseBlock(hive.GetBytes());
    if (hasBase && U32(hive.GetBytes(), kSequence1) == U32(hive.GetBytes(), kSequence2)) return true;
    std::size_t largest = hive.m_nSize;
    for (const CFileBytes& log : logs)
        largest += log.m_nSize;
    if (!hasBase) {
        const CFileBytes* const base = FindBaseBlock(logs);
        if (base == nullptr) return false;
        std::memcpy(hive.m_buffer.GetData(), base->m_buffer.GetData(), kBaseHead);
    }
    bool recovered = false;
    const CEntries entries = EntriesOf(logs);
    // A log begins with all that was missing then, so its first entry may be later than what the hive expects, or than
    // the last one of the other log that is whole.
    std::uint32_t lastSequence = 0;
    for (auto entry = entries.m_entries.lower_bound(U32(hive.GetBytes(), kSequence2)); entry != entries.m_entries.end();
         ++entry) {
        const std::optional<CChanges> changes = ChangesOf(entry->second);
        if (!changes || !Apply(hive, *changes, largest)) return false;
        lastSequence = entry->first;
        recovered = true;
    }
    if (recovered && entries.m_nLastLost > lastSequence) return false;
    for (const CFileBytes& log : logs) {
        const std::string_view bytes = log.GetBytes();
        if (recovered || !IsBaseBlock(bytes) || IsNewForm(bytes)) continue;
        // A log of another state of the hive has another time, or was not finished itself.
        if (U32(bytes, kSequence1) != U32(bytes, kSequence2)) continue;
        if (U64(bytes, kTimestamp) != U64(hive.GetBytes(), kTimestamp)) continue;
        const std::optional<CChanges> changes = OldChangesOf(bytes);
        recovered = changes && Apply(hive, *changes, largest);
    }
    return recovered;
}

}  // namespace delvane
