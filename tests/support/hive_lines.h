// What a hive holds, as lines of text.
#pragma once

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "platform/hosted/registry/hive.h"
#include "platform/machine.h"

namespace delvane {

inline CFileBytes BytesOf(std::string_view text) {
    CFileBytes bytes;
    if (text.empty()) return bytes;
    bytes.m_buffer = CPageBuffer(text.size());
    std::memcpy(bytes.m_buffer.GetData(), text.data(), text.size());
    bytes.m_nSize = text.size();
    return bytes;
}

// The bytes, NUL as "~"; of more than 40 their number and the last one.
inline std::string ShowBytes(std::string_view bytes) {
    std::string shown(bytes);
    for (char& c : shown)
        c = c == '\0' ? '~' : c;
    return shown.size() <= 40 ? shown : std::to_string(shown.size()) + " bytes, last " + shown.back();
}

// Below a key, in the order of the hive: "Software\X" for a key, "Software\X: name (1) text~" for a value.
inline void ListHive(CHive& hive, std::uint32_t key, const std::string& path, std::vector<std::string>& lines) {
    CKeyContents contents;
    if (!hive.ReadKey(key, contents)) {
        lines.push_back(path + " cannot be read");
        return;
    }
    for (const CKeyContents::CValue& value : contents.m_values) {
        lines.push_back(path + ": " + ShowBytes(contents.Get(value.m_name)) + " (" + std::to_string(value.m_dwType) +
                        ") " + ShowBytes(contents.Get(value.m_data)));
    }
    for (const CKeyContents::CSubkey& subkey : contents.m_subkeys) {
        const std::string below = (path.empty() ? "" : path + "\\") + ShowBytes(contents.Get(subkey.m_name));
        lines.push_back(below);
        ListHive(hive, subkey.m_nKey, below, lines);
    }
}

inline std::vector<std::string> ListHive(CHive& hive) {
    std::vector<std::string> lines;
    ListHive(hive, hive.GetRoot(), "", lines);
    return lines;
}

}  // namespace delvane
