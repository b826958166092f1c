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
    std::size_t longestSubkey = 0;
    std::size_t longestName = 0;
    std::size_t largestData = 0;
    for (const CSubkey& subkey : m_subkeys)
        longestSubkey = std::max(longestSubkey, subkey.m_name.m_nLength);
    for (const CValue& value : m_values) {
        longestName = std::max(longestName, value.m_name.m_nLength);
        largestData = std::max(largestData, value.m_data.m_nLength);
    }
    info.m_nSubkeys = static_cast<std::uint32_t>(m_subkeys.size());
    info.m_nLongestSubkey = static_cast<std::uint32_t>(longestSubkey);
    info.m_nValues = static_cast<std::uint32_t>(m_values.size());
    info.m_nLongestValueName = static_cast<std::uint32_t>(longestName);
    info.m_nLargestData = static_cast<std::uint32_t>(largestData);
    info.m_dwError = m_dwError;
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
