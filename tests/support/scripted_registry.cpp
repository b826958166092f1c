#include "tests/support/scripted_registry.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "platform/little_endian.h"

namespace delvane {
namespace {

constexpr std::array<std::pair<std::string_view, HKEY>, 3> kRoots = {
    {{"HKCR", HKEY_CLASSES_ROOT}, {"HKCU", HKEY_CURRENT_USER}, {"HKLM", HKEY_LOCAL_MACHINE}}};

// The texts between quotation marks.
std::vector<CString> TextsOf(std::string_view line) {
    std::vector<CString> texts;
    bool inside = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"') {
            inside = !inside;
            if (inside) texts.emplace_back();
        } else if (inside && line[i] == '\\' && (line[i + 1] == '"' || line[i + 1] == '0')) {
            texts.back() += line[++i] == '0' ? '\0' : '"';
        } else if (inside) {
            texts.back() += line[i];
        }
    }
    return texts;
}

std::uint32_t Fill(CRoom& room, std::string_view bytes, std::uint32_t extra) {
    const bool fits = room.m_nSize >= bytes.size() + extra;
    room.m_nSize = static_cast<std::uint32_t>(bytes.size());
    if (fits) std::memcpy(room.m_pBytes, bytes.data(), bytes.size());
    return fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

}  // namespace

CScriptedRegistry::CScriptedRegistry(std::string_view text) {
    std::vector<CKey*> open = {&m_top};
    std::istringstream lines{CString(text)};
    std::size_t margin = CString::npos;
    for (CString line; std::getline(lines, line);) {
        const std::size_t indent = line.find_first_not_of(' ');
        if (indent == CString::npos) continue;
        if (margin == CString::npos) margin = indent;
        const std::size_t level = (indent - margin) / 2;
        if (indent < margin || level >= open.size()) throw std::invalid_argument("indented too far: " + line);
        open.resize(level + 1);
        const CString content = line.substr(indent);
        if (level > 0 && content.find(" = ") != CString::npos) {
            open.back()->m_values.push_back(ParseValue(content));
            continue;
        }
        const std::size_t end = content.find("  ");
        auto key = std::make_shared<CKey>();
        key->m_name = content.substr(0, end);
        if (level > 0) key->m_name.pop_back();
        if (end != CString::npos) key->m_refusal = content.substr(end + 2);
        open.back()->m_subkeys.push_back(key);
        open.push_back(key.get());
    }
}

CScriptedRegistry::CValue CScriptedRegistry::ParseValue(std::string_view line) {
    const std::size_t equals = line.find(" = ");
    CValue value;
    value.m_name = line.substr(0, equals);
    if (value.m_name == "@") value.m_name.clear();
    std::string_view rest = line.substr(equals + 3);
    for (const std::string_view refusal : {"grows", "late", "vanishes"}) {
        if (!rest.ends_with("  " + CString(refusal))) continue;
        value.m_refusal = refusal;
        rest.remove_suffix(refusal.size() + 2);
    }
    std::istringstream words{CString(rest)};
    CString word;
    words >> word;
    if (word == "sz" || word == "expand") {
        value.m_dwType = word == "sz" ? REG_SZ : REG_EXPAND_SZ;
        value.m_data = TextsOf(rest).at(0) + '\0';
    } else if (word == "multi") {
        value.m_dwType = REG_MULTI_SZ;
        for (const CString& text : TextsOf(rest))
            value.m_data += text + '\0';
        value.m_data += '\0';
    } else if (word == "dword") {
        value.m_dwType = REG_DWORD;
        std::uint32_t number = 0;
        words >> number;
        value.m_data += BytesOf(number, 4);
    } else if (word.starts_with("hex(")) {
        value.m_dwType = static_cast<std::uint32_t>(std::stoul(word.substr(4)));
        for (CString byte; words >> byte;)
            value.m_data += static_cast<char>(std::stoul(byte, nullptr, 16));
    } else {
        throw std::invalid_argument("no such type: " + word);
    }
    return value;
}

const CScriptedRegistry::CKey* CScriptedRegistry::Find(HKEY key) const {
    if (key > 0 && key <= m_handles.size()) return m_handles[key - 1];
    for (const auto& [name, root] : kRoots) {
        for (const auto& hive : m_top.m_subkeys) {
            if (root == key && hive->m_name == name) return hive.get();
        }
    }
    static const CKey kEmptyHive;
    return key >= HKEY_CLASSES_ROOT ? &kEmptyHive : nullptr;
}

std::uint32_t CScriptedRegistry::OpenKey(HKEY parent, std::string_view name, HKEY& key) {
    const CKey* const above = Find(parent);
    if (above == nullptr) return ERROR_INVALID_HANDLE;
    const auto& subkeys = above->m_subkeys;
    auto found =
        std::find_if(subkeys.begin(), subkeys.end(), [&](const auto& candidate) { return candidate->m_name == name; });
    if (found == subkeys.end()) {
        found = std::find_if(subkeys.begin(), subkeys.end(),
                             [&](const auto& candidate) { return mbsicmp(candidate->m_name, name) == 0; });
    }
    if (found == subkeys.end()) return ERROR_FILE_NOT_FOUND;
    if ((*found)->m_refusal == "unopenable") return ERROR_ACCESS_DENIED;
    m_handles.push_back(found->get());
    key = static_cast<HKEY>(m_handles.size());
    ++m_nOpen;
    return ERROR_SUCCESS;
}

void CScriptedRegistry::CloseKey(HKEY key) {
    if (key == 0 || key > m_handles.size() || m_handles[key - 1] == nullptr) return;
    m_handles[key - 1] = nullptr;
    --m_nOpen;
}

std::uint32_t CScriptedRegistry::QueryInfo(HKEY key, CKeyInfo& info) {
    const CKey* const open = Find(key);
    if (open == nullptr) return ERROR_INVALID_HANDLE;
    info = {};
    info.m_nSubkeys = static_cast<std::uint32_t>(open->m_subkeys.size());
    info.m_nValues = static_cast<std::uint32_t>(open->m_values.size() + (open->m_refusal == "shrinks" ? 1 : 0));
    for (const auto& subkey : open->m_subkeys)
        info.m_nLongestSubkey = std::max(info.m_nLongestSubkey, static_cast<std::uint32_t>(subkey->m_name.size()));
    for (const CValue& value : open->m_values) {
        const std::size_t known = value.m_data.size() - (value.m_refusal == "grows" ? 1 : 0);
        info.m_nLongestValueName = std::max(info.m_nLongestValueName, static_cast<std::uint32_t>(value.m_name.size()));
        info.m_nLargestData = std::max(info.m_nLargestData, static_cast<std::uint32_t>(known));
    }
    return ERROR_SUCCESS;
}

std::uint32_t CScriptedRegistry::EnumValue(HKEY key, std::uint32_t index, CRoom& name, std::uint32_t& type,
                                           CRoom& data) {
    const CKey* const open = Find(key);
    if (open == nullptr) return ERROR_INVALID_HANDLE;
    if (index >= open->m_values.size()) return ERROR_NO_MORE_ITEMS;
    const CValue& value = open->m_values[index];
    type = value.m_dwType;
    const bool empty = value.m_refusal == "late" || value.m_refusal == "vanishes";
    const std::uint32_t result = Fill(data, empty ? CString() : value.m_data, 0);
    return std::max(result, Fill(name, value.m_name, 1));
}

std::uint32_t CScriptedRegistry::EnumKey(HKEY key, std::uint32_t index, CRoom& name) {
    const CKey* const open = Find(key);
    if (open == nullptr) return ERROR_INVALID_HANDLE;
    if (index >= open->m_subkeys.size()) return ERROR_NO_MORE_ITEMS;
    return Fill(name, open->m_subkeys[index]->m_name, 1);
}

std::uint32_t CScriptedRegistry::QueryValue(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) {
    const CKey* const open = Find(key);
    if (open == nullptr) return ERROR_INVALID_HANDLE;
    for (const CValue& value : open->m_values) {
        if (mbsicmp(value.m_name, name) != 0 || value.m_refusal == "vanishes") continue;
        if (type != nullptr) *type = value.m_dwType;
        if (data.m_pBytes != nullptr) return Fill(data, value.m_data, 0);
        data.m_nSize = static_cast<std::uint32_t>(value.m_data.size());
        return ERROR_SUCCESS;
    }
    return ERROR_FILE_NOT_FOUND;
}

}  // namespace delvane
