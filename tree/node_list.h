// A list of nodes: contiguous, in the arena of its tree.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tree/arena.h"

namespace delvane {

class CDelvObj;

// Does not own its nodes: nodes and list die with the arena.
class CNodeList {
public:
    explicit CNodeList(CArena& arena) : m_pArena(&arena) {}

    CArena& GetArena() const { return *m_pArena; }
    bool empty() const { return m_nCount == 0; }
    std::size_t size() const { return m_nCount; }
    CDelvObj** begin() const { return reinterpret_cast<CDelvObj**>(m_pNodes); }
    CDelvObj** end() const { return begin() + m_nCount; }
    CDelvObj* front() const { return *begin(); }
    CDelvObj* back() const { return end()[-1]; }
    CDelvObj* operator[](std::size_t index) const { return begin()[index]; }

    void push_back(CDelvObj* node) { insert(end(), node); }
    void insert(CDelvObj** position, CDelvObj* node);
    void pop_back() { --m_nCount; }
    // Room for a list that claims to hold that many nodes. A claim far above what most lists hold is not believed at
    // once: the list grows when the nodes come.
    void ReserveClaim(std::size_t count);

private:
    void Grow(unsigned power);

    CArena* m_pArena;
    void** m_pNodes = nullptr;
    std::uint32_t m_nCount = 0;
    std::uint8_t m_nPower = 0;  // there is room for 2^power nodes, or for none while m_pNodes is null
};

static_assert(sizeof(CNodeList) <= 24, "two of them stand in each directory and key");

}  // namespace delvane
