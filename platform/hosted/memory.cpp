#include "platform/memory.h"

#include <cstdint>
#include <new>
#include <sys/mman.h>

namespace delvane {
namespace {

constexpr std::size_t RoundUp(std::size_t size) { return (size + kPageBlock - 1) & ~(kPageBlock - 1); }

}  // namespace

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
    madvise(block, whole, MADV_HUGEPAGE);
#ifdef MADV_POPULATE_WRITE
    madvise(block, size, MADV_POPULATE_WRITE);
#endif
    return block;
}

void ReturnPages(void* block, std::size_t size) noexcept { munmap(block, RoundUp(size)); }

}  // namespace delvane
