#include "tree/arena.h"

namespace delvane {

void* CArena::TakeFromNewBlock(std::size_t size) {
    // What is larger than a quarter of a block gets its own, so that the rest of the present block is not lost.
    if (size > kPageBlock / 4) {
        m_blocks.emplace_back(size);
        return m_blocks.back().GetData();
    }
    m_blocks.emplace_back(kPageBlock);
    m_pBlock = m_blocks.back().GetData();
    m_nBlock = kPageBlock;
    m_nUsed = size;
    return m_pBlock;
}

void** CArena::TakeArray(unsigned power) {
    void** const free = m_freeArrays[power];
    if (free != nullptr) {
        m_freeArrays[power] = static_cast<void**>(*free);
        return free;
    }
    return static_cast<void**>(Take(sizeof(void*) << power, alignof(void*)));
}

void CArena::ReturnArray(void** array, unsigned power) {
    *array = m_freeArrays[power];
    m_freeArrays[power] = array;
}

}  // namespace delvane
