#include "platform/memory.h"

#include <cstdint>
#include <cstdlib>
#include <new>
#include <sys/mman.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define __SANITIZE_ADDRESS__
#endif
#endif

namespace delvane {

#ifdef __SANITIZE_ADDRESS__

// From the heap, so that a read behind the block is seen.
void* TakePages(std::size_t size) {
    void* const block = size > SIZE_MAX / 2 ? nullptr : std::calloc(size, 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void ReturnPages(void* block, std::size_t) noexcept { std::free(block); }

#else

static constexpr std::size_t RoundUp(std::size_t size) { return (size + kPageBlock - 1) & ~(kPageBlock - 1); }

void* TakePages(std::size_t size) {
    if (size == 0 || size > SIZE_MAX / 2) throw std::bad_alloc();
    const std::size_t whole = RoundUp(size);
    // A huge page must be aligned to its own size: one more is mapped, and the two ends are given back.
    void* const raw = mmap(nullptr, whole + kPageBlock, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED) throw std::bad_alloc();
    char* const begin = static_cast<char*>(raw);
    const auto address = reinterpret_cast<std::uintptr_t>(begin);
    const std::size_t lead = (kPageBlock - address % kPageBlock) % kPageBlock;
    if (lead != 0) munmap(begin, lead);
    munmap(begin + lead + whole, kPageBlock - lead);
    char* const block = begin + lead;
    // Neither call is needed for the memory to work, so their failures do not matter.
    if (size >= kPageBlock) madvise(block, whole, MADV_HUGEPAGE);
#ifdef MADV_POPULATE_WRITE
    madvise(block, size, MADV_POPULATE_WRITE);
#endif
    return block;
}

void ReturnPages(void* block, std::size_t size) noexcept { munmap(block, RoundUp(size)); }

#endif

}  // namespace delvane
