#include "platform/machine.h"

#include <cstring>

namespace delvane {

bool FillRoom(CRoom& room, std::string_view bytes, bool wantsNul) {
    const bool fits = room.m_nSize >= bytes.size() + (wantsNul ? 1 : 0);
    room.m_nSize = static_cast<std::uint32_t>(bytes.size());
    if (fits) {
        if (!bytes.empty()) std::memcpy(room.m_pBytes, bytes.data(), bytes.size());
        if (wantsNul) room.m_pBytes[bytes.size()] = '\0';
    }
    return fits;
}

}  // namespace delvane
