// Words as files have them: the lowest byte first.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string>

namespace delvane {

// Of bytes that the caller knows to be there.
template <class Bytes>
std::uint16_t U16(const Bytes& bytes, std::size_t at) {
    assert(at + 2 <= bytes.size());
    return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1])
                                                                                  << 8);
}
template <class Bytes>
std::uint32_t U32(const Bytes& bytes, std::size_t at) {
    return U16(bytes, at) | static_cast<std::uint32_t>(U16(bytes, at + 2)) << 16;
}
template <class Bytes>
std::uint64_t U64(const Bytes& bytes, std::size_t at) {
    return U32(bytes, at) | static_cast<std::uint64_t>(U32(bytes, at + 4)) << 32;
}

// The lowest `size` bytes of the number.
inline std::string BytesOf(std::uint64_t number, unsigned size) {
    std::string bytes;
    for (unsigned i = 0; i < size; ++i)
        bytes += static_cast<char>(number >> 8 * i);
    return bytes;
}

}  // namespace delvane
