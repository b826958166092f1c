#include "platform/hosted/hive.h"

#include "platform/machine.h"
#include "platform/text.h"

namespace delvane {
namespace {

const CKeyContents::CValue* FindValue(const CKeyContents& contents, std::string_view name) {
    for (const CKeyContents::CValue& value : contents.m_values) {
        if (mbsicmp(contents.Get(value.m_name), name) == 0) return &value;
    }
    return nullptr;
}

}  // namespace

std::optional<std::uint32_t> CHive::FindKey(std::uint32_t key, std::string_view path) {
    std::optional<std::uint32_t> found = key;
    while (found && !path.empty()) {
        const std::size_t end = path.find('\\');
        found = FindSubkey(*found, path.substr(0, end));
        path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
    }
    return found;
}

std::optional<std::string> CHive::FindText(std::string_view path, std::string_view name) {
    const std::optional<std::uint32_t> key = FindKey(GetRoot(), path);
    CKeyContents contents;
    if (!key || !ReadKey(*key, contents)) return std::nullopt;
    const CKeyContents::CValue* const value = FindValue(contents, name);
    if (value == nullptr || (value->m_dwType != REG_SZ && value->m_dwType != REG_EXPAND_SZ)) return std::nullopt;
    const std::string_view text = contents.Get(value->m_data);
    return std::string(text.substr(0, text.find('\0')));
}

std::optional<std::uint32_t> CHive::FindNumber(std::string_view path, std::string_view name) {
    const std::optional<std::uint32_t> key = FindKey(GetRoot(), path);
    CKeyContents contents;
    if (!key || !ReadKey(*key, contents)) return std::nullopt;
    const CKeyContents::CValue* const value = FindValue(contents, name);
    if (value == nullptr || value->m_dwType != REG_DWORD || value->m_data.m_nLength != 4) return std::nullopt;
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(contents.Get(value->m_data)[i]);
    return number;
}

}  // namespace delvane
