#include "platform/memory.h"

#include <cstdint>
#include <new>

#include "platform/win32/windows.h"

namespace delvane {

void* TakePages(std::size_t size) {
    void* const block = size == 0 || size > SIZE_MAX / 2
                            ? nullptr
                            : VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void ReturnPages(void* block, std::size_t) noexcept { VirtualFree(block, 0, MEM_RELEASE); }

}  // namespace delvane
