// Memory in large blocks, for what comes in millions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

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
    CPageBuffer(CPageBuffer&& other) noexcept { *this = std::move(other); }
    CPageBuffer& operator=(CPageBuffer&& other) noexcept {
        std::swap(m_pBytes, other.m_pBytes);
        std::swap(m_nSize, other.m_nSize);
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

// An array of plain things that grows in such memory.
template <class T>
class CPageVector {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    std::size_t size() const { return m_nCount; }
    T* data() { return reinterpret_cast<T*>(m_buffer.GetData()); }
    const T* data() const { return reinterpret_cast<const T*>(m_buffer.GetData()); }
    T& operator[](std::size_t index) { return data()[index]; }
    const T& operator[](std::size_t index) const { return data()[index]; }
    void Reserve(std::size_t count) {
        if (count * sizeof(T) <= m_buffer.GetSize()) return;
        CPageBuffer larger(std::max({count * sizeof(T), m_buffer.GetSize() * 2, kFirstSize}));
        if (m_nCount != 0) std::memcpy(larger.GetData(), m_buffer.GetData(), m_nCount * sizeof(T));
        m_buffer = std::move(larger);
    }
    // What is new reads as zero, since nothing ever leaves the array.
    void Resize(std::size_t count) {
        Reserve(count);
        m_nCount = count;
    }
    void push_back(const T& item) {
        Reserve(m_nCount + 1);
        std::memcpy(m_buffer.GetData() + m_nCount++ * sizeof(T), &item, sizeof(T));
    }

private:
    static constexpr std::size_t kFirstSize = 1 << 16;

    CPageBuffer m_buffer;
    std::size_t m_nCount = 0;
};

}  // namespace delvane
