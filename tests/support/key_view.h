// A key of a registry as a walk sees it.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/registry.h"

namespace delvane {

struct CKeyView {
    std::vector<std::pair<CString, std::pair<std::uint32_t, CString>>> m_values;  // name, type, data
    std::vector<CString> m_subkeys;
};

// Asks for the sizes first, and takes rooms of those sizes. std::runtime_error where a call fails, or where there is
// more than was told.
inline CKeyView ViewKey(CRegistry& registry, HKEY key) {
    const auto expect = [](std::uint32_t wanted, std::uint32_t code) {
        if (code != wanted) throw std::runtime_error("registry: error " + std::to_string(code));
    };
    CKeyInfo info;
    expect(ERROR_SUCCESS, registry.RegQueryInfoKey(key, info));
    std::vector<char> name(std::max(info.m_nLongestValueName, info.m_nLongestSubkey) + std::size_t{1});
    std::vector<char> data(info.m_nLargestData);
    CKeyView view;
    for (std::uint32_t i = 0; i <= info.m_nValues; ++i) {
        CRoom nameRoom{name.data(), info.m_nLongestValueName + 1};
        CRoom dataRoom{data.data(), info.m_nLargestData};
        std::uint32_t type = 0;
        const std::uint32_t code = registry.RegEnumValue(key, i, nameRoom, type, dataRoom);
        expect(i < info.m_nValues ? ERROR_SUCCESS : ERROR_NO_MORE_ITEMS, code);
        if (code != ERROR_SUCCESS) break;
        view.m_values.push_back({{name.data(), nameRoom.m_nSize}, {type, {data.data(), dataRoom.m_nSize}}});
    }
    for (std::uint32_t i = 0; i <= info.m_nSubkeys; ++i) {
        CRoom room{name.data(), info.m_nLongestSubkey + 1};
        const std::uint32_t code = registry.RegEnumKeyEx(key, i, room);
        expect(i < info.m_nSubkeys ? ERROR_SUCCESS : ERROR_NO_MORE_ITEMS, code);
        if (code == ERROR_SUCCESS) view.m_subkeys.emplace_back(name.data(), room.m_nSize);
    }
    return view;
}

// The key at that path, "Software\X"; the keys above it stay open. 0 where one of them cannot be opened.
inline HKEY OpenPath(CRegistry& registry, HKEY key, std::string_view path) {
    while (!path.empty()) {
        const std::string_view name = path.substr(0, path.find('\\'));
        if (registry.RegOpenKeyEx(key, name, key) != ERROR_SUCCESS) return 0;
        path.remove_prefix(std::min(name.size() + 1, path.size()));
    }
    return key;
}

}  // namespace delvane
