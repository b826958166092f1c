#include "tests/support/scripted_registry.h"

#include <algorithm>
#include <array>
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
        key->m_strName = content.substr(0, end);
        if (level > 0) key->m_strName.pop_back();
        if (end != CString::npos) key->m_strRefusal = content.substr(end + 2);
        open.back()->m_subkeys.push_back(key);
        open.push_back(key.get());
    }
}

CScriptedRegistry::CValue CScriptedRegistry::ParseValue(std::string_view line) {
    const std::size_t equals = line.find(" = ");
    CValue value;
    value.m_strName = line.substr(0, equals);
    if (value.m_strName == "@") value.m_strName.clear();
    std::string_view rest = line.substr(equals + 3);
    for (const std::string_view refusal : {"grows", "late", "vanishes", "denied"}) {
        if (!rest.ends_with("  " + CString(refusal))) continue;
        value.m_strRefusal = refusal;
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

CScriptedRegistry::COpenKey* CScriptedRegistry::Find(HKEY key) {
    if (key < HKEY_CLASSES_ROOT) return m_keys.Find(key);
    static const CKey kEmptyHive;
    COpenKey& root = m_roots[key];
    root.Show(kEmptyHive);
    for (const auto& [name, number] : kRoots) {
        for (const auto& hive : m_top.m_subkeys) {
            if (number == key && hive->m_strName == name) root.Show(*hive);
        }
    }
    return &root;
}

void CScriptedRegistry::COpenKey::Show(const CKey& key) {
    m_pKey = &key;
    m_contents.Clear();
    for (const auto& subkey : key.m_subkeys)
        m_contents.m_subkeys.push_back({m_contents.Add(subkey->m_strName), 0});
    for (const CValue& value : key.m_values) {
        const CKeyContents::CSpan name = m_contents.Add(value.m_strName);
        m_contents.m_values.push_back({name, value.m_dwType, m_contents.Add(value.m_data)});
    }
}

std::uint32_t CScriptedRegistry::RegOpenKeyEx(HKEY parent, std::string_view name, HKEY& key) {
    const COpenKey* const above = Find(parent);
    if (above == nullptr) return ERROR_INVALID_HANDLE;
    const auto& subkeys = above->m_pKey->m_subkeys;
    auto found = std::find_if(subkeys.begin(), subkeys.end(),
                              [&](const auto& candidate) { return candidate->m_strName == name; });
    if (found == subkeys.end()) {
        found = std::find_if(subkeys.begin(), subkeys.end(),
                             [&](const auto& candidate) { return mbsicmp(candidate->m_strName, name) == 0; });
    }
    if (found == subkeys.end()) return ERROR_FILE_NOT_FOUND;
    if ((*found)->m_strRefusal == "unopenable") return ERROR_ACCESS_DENIED;
    std::unique_ptr<COpenKey> opened = m_keys.Take();
    opened->Show(**found);
    key = m_keys.Add(std::move(opened));
    return ERROR_SUCCESS;
}

std::uint32_t CScriptedRegistry::ReadKey(HKEY key, bool, CKeyContents*& contents) {
    COpenKey* const open = Find(key);
    if (open == nullptr) return ERROR_INVALID_HANDLE;
    contents = &open->m_contents;
    return ERROR_SUCCESS;
}

std::uint32_t CScriptedRegistry::RegQueryInfoKey(HKEY key, CKeyInfo& info) {
    const std::uint32_t code = CRegistry::RegQueryInfoKey(key, info);
    if (code != ERROR_SUCCESS) return code;
    const CKey& shown = *Find(key)->m_pKey;
    if (shown.m_strRefusal == "shrinks") ++info.m_nValues;
    for (const CValue& value : shown.m_values) {
        if (value.m_strRefusal == "grows" && value.m_data.size() == info.m_nLargestData) --info.m_nLargestData;
    }
    return ERROR_SUCCESS;
}

std::uint32_t CScriptedRegistry::RegEnumValue(HKEY key, std::uint32_t index, CRoom& name, std::uint32_t& type,
                                              CRoom& data) {
    const std::uint32_t code = CRegistry::RegEnumValue(key, index, name, type, data);
    if (code != ERROR_SUCCESS && code != ERROR_MORE_DATA) return code;
    const CString& refusal = Find(key)->m_pKey->m_values[index].m_strRefusal;
    if (refusal == "late" || refusal == "vanishes" || refusal == "denied") data.m_nSize = 0;
    return code;
}

std::uint32_t CScriptedRegistry::RegQueryValueEx(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) {
    const COpenKey* const open = Find(key);
    if (open == nullptr) return ERROR_INVALID_HANDLE;
    for (const CValue& value : open->m_pKey->m_values) {
        if (mbsicmp(value.m_strName, name) != 0 || value.m_strRefusal == "vanishes") continue;
        if (value.m_strRefusal == "denied") return ERROR_ACCESS_DENIED;
        if (type != nullptr) *type = value.m_dwType;
        if (data.m_pBytes != nullptr) return FillRoom(data, value.m_data, false) ? ERROR_SUCCESS : ERROR_MORE_DATA;
        data.m_nSize = static_cast<std::uint32_t>(value.m_data.size());
        return ERROR_SUCCESS;
    }
    return ERROR_FILE_NOT_FOUND;
}

}  // namespace delvane
