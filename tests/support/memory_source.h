// Bytes in memory as a file, and changes to them.
#pragma once

#include <cstring>
#include <string>
#include <string_view>

#include "platform/images/image.h"
#include "platform/little_endian.h"

namespace delvane {

// Notes what is read of it. It may end before the size that it states, as a file that another process cuts short.
class CMemorySource : public CByteSource {
public:
    explicit CMemorySource(std::string_view bytes) : CMemorySource(bytes, bytes.size()) {}
    CMemorySource(std::string_view bytes, std::size_t readable) : m_bytes(bytes), m_nReadable(readable) {}

    std::uint64_t GetSize() const override { return m_bytes.size(); }
    std::size_t Read(std::uint64_t offset, void* into, std::size_t size) const override {
        ++m_nReads;
        m_nAskedFor += size;
        if (offset >= m_nReadable) return 0;
        const std::string_view part = m_bytes.substr(0, m_nReadable).substr(static_cast<std::size_t>(offset), size);
        std::memcpy(into, part.data(), part.size());
        return part.size();
    }

    mutable std::size_t m_nReads = 0;
    mutable std::size_t m_nAskedFor = 0;

private:
    std::string_view m_bytes;
    std::size_t m_nReadable;
};

// Puts a number there, least significant byte first.
inline void Patch(std::string& bytes, std::size_t offset, std::uint32_t number, std::size_t size) {
    bytes.replace(offset, size, BytesOf(number, static_cast<unsigned>(size)));
}

}  // namespace delvane
