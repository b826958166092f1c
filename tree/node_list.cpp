#include "tree/node_list.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace delvane {

void CNodeList::Grow(unsigned power) {
    void** const array = m_pArena->TakeArray(power);
    if (m_pNodes != nullptr) {
        std::memcpy(array, m_pNodes, m_nCount * sizeof(void*));
        m_pArena->ReturnArray(m_pNodes, m_nPower);
    }
    m_pNodes = array;
    m_nPower = static_cast<std::uint8_t>(power);
}

void CNodeList::ReserveClaim(std::size_t count) {
    constexpr std::size_t kBelieved = 1024;
    count = std::min(count, kBelieved);
    if (count == 0) return;
    const unsigned power = static_cast<unsigned>(std::bit_width(count - 1));
    if (m_pNodes == nullptr || power > m_nPower) Grow(power);
}

void CNodeList::insert(CDelvObj** position, CDelvObj* node) {
    const std::size_t index = m_pNodes == nullptr ? 0 : static_cast<std::size_t>(position - begin());
    if (m_pNodes == nullptr) {
        Grow(1);
    } else if (m_nCount == std::size_t{1} << m_nPower) {
        Grow(m_nPower + 1U);
    }
    std::memmove(m_pNodes + index + 1, m_pNodes + index, (m_nCount - index) * sizeof(void*));
    m_pNodes[index] = node;
    ++m_nCount;
}

}  // namespace delvane
