// Memory in large blocks, for what comes in millions.
#pragma once

#include <cstddef>

namespace delvane {

// The first touch of a page costs more than filling it, so a block is asked for in huge pages where the system has
// them, and is populated in one call. The memory reads as zero. Throws std::bad_alloc.
constexpr std::size_t kPageBlock = std::size_t{2} << 20;
void* TakePages(std::size_t size);
void ReturnPages(void* block, std::size_t size) noexcept;

// A buffer of such memory.
class CPageBuffer {
public:
    CPageBuffer() = default;
    explicit CPageBuffer(std::size_t size) : m_pBytes(static_cast<char*>(TakePages(size))), m_nSize(size) {}
    CPageBuffer(CPageBuffer&& other) noexcept : m_pBytes(other.m_pBytes), m_nSize(other.m_nSize) {
        other.m_pBytes = nullptr;
        other.m_nSize = 0;
    }
    CPageBuffer& operator=(CPageBuffer&& other) noexcept {
        char* const bytes = m_pBytes;
        const std::size_t size = m_nSize;
        m_pBytes = other.m_pBytes;
        m_nSize = other.m_nSize;
        other.m_pBytes = bytes;
        other.m_nSize = size;
        return *this;
    }
    ~CPageBuffer() {
        if (m_pBytes != nullptr) ReturnPages(m_pBytes, m_nSize);
    }

    char* GetData() const { return m_pBytes; }
    std::size_t GetSize() const { return m_nSize; }

private:
    char* m_pBytes = nullptr;
    std::size_t m_nSize = 0;
};

}  // namespace delvane
