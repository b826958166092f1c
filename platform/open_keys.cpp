#include "platform/open_keys.h"

#include <algorithm>
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

void CKeyContents::QueryInfo(CKeyInfo& info) const {
    const auto raise = [](std::uint32_t& longest, CSpan span) {
        longest = std::max(longest, static_cast<std::uint32_t>(span.m_nLength));
    };
    info = {};
    info.m_nSubkeys = static_cast<std::uint32_t>(m_subkeys.size());
    info.m_nValues = static_cast<std::uint32_t>(m_values.size());
    info.m_dwError = m_dwError;
    for (const CSubkey& subkey : m_subkeys)
        raise(info.m_nLongestSubkey, subkey.m_name);
    for (const CValue& value : m_values) {
        raise(info.m_nLongestValueName, value.m_name);
        raise(info.m_nLargestData, value.m_data);
    }
}

std::uint32_t CKeyContents::EnumValue(std::uint32_t index, CRoom& name, std::uint32_t& type, CRoom& data) const {
    if (index >= m_values.size()) return ERROR_NO_MORE_ITEMS;
    const CValue& value = m_values[index];
    type = value.m_dwType;
    const bool nameFits = FillRoom(name, Get(value.m_name), true);
    const bool dataFits = FillRoom(data, Get(value.m_data), false);
    return nameFits && dataFits ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

std::uint32_t CKeyContents::EnumKey(std::uint32_t index, CRoom& name) const {
    if (index >= m_subkeys.size()) return ERROR_NO_MORE_ITEMS;
    return FillRoom(name, Get(m_subkeys[index].m_name), true) ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

}  // namespace delvane
