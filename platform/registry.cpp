#include "platform/registry.h"

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

std::uint32_t CRegistry::RegQueryInfoKey(HKEY key, CKeyInfo& info) {
    CKeyContents* contents = nullptr;
    if (const std::uint32_t code = ReadKey(key, true, contents); code != ERROR_SUCCESS) return code;
    const auto raise = [](std::uint32_t& longest, CKeyContents::CSpan span) {
        longest = std::max(longest, static_cast<std::uint32_t>(span.m_nLength));
    };
    info = {};
    info.m_nSubkeys = static_cast<std::uint32_t>(contents->m_subkeys.size());
    info.m_nValues = static_cast<std::uint32_t>(contents->m_values.size());
    info.m_dwError = contents->m_dwError;
    for (const CKeyContents::CSubkey& subkey : contents->m_subkeys)
        raise(info.m_nLongestSubkey, subkey.m_name);
    for (const CKeyContents::CValue& value : contents->m_values) {
        raise(info.m_nLongestValueName, value.m_name);
        raise(info.m_nLargestData, value.m_data);
    }
    return ERROR_SUCCESS;
}

std::uint32_t CRegistry::RegEnumValue(HKEY key, std::uint32_t index, CRoom& name, std::uint32_t& type, CRoom& data) {
    CKeyContents* contents = nullptr;
    if (const std::uint32_t code = ReadKey(key, false, contents); code != ERROR_SUCCESS) return code;
    if (index >= contents->m_values.size()) return ERROR_NO_MORE_ITEMS;
    contents->m_nLastValue = index;
    const CKeyContents::CValue& value = contents->m_values[index];
    type = value.m_dwType;
    const bool nameFits = FillRoom(name, contents->Get(value.m_name), true);
    const bool dataFits = FillRoom(data, contents->Get(value.m_data), false);
    return nameFits && dataFits ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

std::uint32_t CRegistry::RegEnumKeyEx(HKEY key, std::uint32_t index, CRoom& name) {
    CKeyContents* contents = nullptr;
    if (const std::uint32_t code = ReadKey(key, false, contents); code != ERROR_SUCCESS) return code;
    if (index >= contents->m_subkeys.size()) return ERROR_NO_MORE_ITEMS;
    contents->m_nLastSubkey = index;
    const std::string_view found = contents->Get(contents->m_subkeys[index].m_name);
    return FillRoom(name, found, true) ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

}  // namespace delvane
