// The form of a registry hive file, and the transaction logs beside it: changes that were written down but have not
// reached it.
//
// A base block of 4096 bytes, then cells. A cell is told by its offset behind the base block; it begins with its size,
// negative while it is in use. All numbers are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/host.h"
#include "platform/little_endian.h"

namespace delvane::regf {

constexpr std::size_t kBaseBlock = 4096;
constexpr std::size_t kBaseHead = 512;  // the part of it that a log holds too
constexpr std::size_t kSector = 512;

// Offsets in the base block.
constexpr std::size_t kSequence1 = 4;
constexpr std::size_t kSequence2 = 8;
constexpr std::size_t kTimestamp = 12;
constexpr std::size_t kMajorVersion = 20;
constexpr std::size_t kMinorVersion = 24;
constexpr std::size_t kFileType = 28;  // 0 a hive; 1, 2 and 6 logs
constexpr std::size_t kRootCell = 36;
constexpr std::size_t kCellsSize = 40;
constexpr std::size_t kChecksum = 508;

// Whether the bytes begin with a base block that is whole.
inline bool IsBaseBlock(std::string_view bytes) {
    if (bytes.size() < kBaseHead || !bytes.starts_with("regf")) return false;
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < kChecksum; at += 4)
        sum ^= U32(bytes, at);
    if (sum == 0) sum = 1;
    if (sum == 0xFFFF'FFFF) sum = 0xFFFF'FFFE;
    return sum == U32(bytes, kChecksum);
}

}  // namespace delvane::regf

namespace delvane {

// Applies the logs to the hive in memory, as Windows does when it loads the hive: entries of the newer form in the
// order of their sequence numbers, of each log up to the first that is not whole, or the sectors of a log of the older
// form. False where changes are missing, and no log has them.
bool ReplayLogs(CFileBytes& hive, const std::vector<CFileBytes>& logs);

// The hash over an entry of a log of the newer form: Marvin32 with the seed that Windows has for logs.
std::uint64_t HashOfLog(std::string_view bytes);

}  // namespace delvane
