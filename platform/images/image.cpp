#include "platform/images/image.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/little_endian.h"

namespace delvane {

namespace {

// Linkers put the newer header behind a stub of a few hundred bytes, so one read of this size answers for nearly every
// file. Thousands of files are asked about, most of them no images at all.
constexpr std::size_t kHeadSize = 1024;

// The MZ header: the offset of the newer header stands in its last four bytes.
constexpr std::size_t kNewHeaderField = 0x3c;

// The PE header, counted from its signature: the signature, the COFF header of 20 bytes, the optional header. The
// subsystem stands at the same place in the 32-bit and the 64-bit form of the optional header.
constexpr std::size_t kOptionalSizeField = 20;
constexpr std::size_t kOptionalHeader = 24;
constexpr std::size_t kSubsystem = 68;  // within the optional header
constexpr std::size_t kSubsystemEnd = kSubsystem + 2;
constexpr std::size_t kNeededOfPe = kOptionalHeader + kSubsystemEnd;

constexpr std::uint16_t kMagic32 = 0x10b;
constexpr std::uint16_t kMagic64 = 0x20b;
constexpr std::uint16_t kSubsystemNative = 1;

}  // namespace

bool MapImage(const CByteSource& file, CLoadedImage& image) {
    image = CLoadedImage{};

    std::array<char, kHeadSize> buffer;
    const std::string_view head(buffer.data(), file.Read(0, buffer.data(), buffer.size()));
    if (!head.starts_with("MZ")) return false;

    // The bytes at the newer header, as many as there are of those that count; none where it lies past the end.
    const std::uint32_t newHeader = head.size() < kNewHeaderField + 4 ? 0 : U32(head, kNewHeaderField);
    std::array<char, kNeededOfPe> farBuffer;
    std::string_view header;
    if (newHeader + std::uint64_t{kNeededOfPe} <= head.size() || head.size() < kHeadSize) {
        header = head.substr(std::min<std::size_t>(newHeader, head.size()));
    } else {
        header = {farBuffer.data(), file.Read(newHeader, farBuffer.data(), farBuffer.size())};
    }

    // NE, LE, and MZ that leads nowhere are all 16-bit images, so the signature need not be looked at further.
    if (!header.starts_with(std::string_view("PE\0\0", 4))) {
        image.fDOSImage = true;
        return false;
    }
    if (header.size() < kNeededOfPe || U16(header, kOptionalSizeField) < kSubsystemEnd) return false;
    const std::uint16_t magic = U16(header, kOptionalHeader);
    if (magic != kMagic32 && magic != kMagic64) return false;
    image.fSystemImage = U16(header, kOptionalHeader + kSubsystem) == kSubsystemNative;
    return true;
}

}  // namespace delvane
