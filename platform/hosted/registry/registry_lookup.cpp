#include "platform/hosted/registry/registry_lookup.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>

#include "platform/hosted/registry/key_name.h"
#include "platform/hosted/registry/registry_text.h"
#include "platform/machine.h"
#include "platform/text.h"

namespace delvane {
namespace {

// What one look at a key line tells. A plain line is ASCII, and its only escapes are the doubled backslashes between
// components; so it can be compared as it stands.
struct CKeyLine {
    std::string_view m_escaped;     // up to the closing bracket
    std::size_t m_nPathLength = 0;  // decoded
    bool m_bPlain = false;
};

CKeyLine LookAt(std::string_view line) {
    std::size_t length = 0;
    bool behindSeparator = true;
    for (std::size_t i = 0; i < line.size(); ++i, ++length) {
        const char c = line[i];
        if (c == ']') return {line.substr(0, i), length, !behindSeparator};
        if (static_cast<unsigned char>(c) >= 0x80) break;
        if (c != '\\') {
            behindSeparator = false;
            continue;
        }
        ++i;
        if (behindSeparator || i == line.size() || line[i] != '\\') break;
        behindSeparator = true;
    }
    return {};
}

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

// Whether a plain line is that of `path`, which has its length. Paths differ near their ends more than near their
// beginnings, so the comparison goes backwards.
bool IsPlainLineOf(std::string_view escaped, std::string_view path) {
    std::size_t at = escaped.size();
    for (std::size_t i = path.size(); i-- > 0;) {
        if (LowerAscii(escaped[--at]) != LowerAscii(path[i])) return false;
        if (path[i] == '\\') --at;
    }
    return true;
}

// Tells most key lines from the wanted ones by the length and the last character of their paths.
class CLineFilter {
public:
    void Add(std::string_view path) { m_endings[path.size() % kLengths] |= Bit(path.back()); }
    bool Admits(const CKeyLine& line) const {
        return (m_endings[line.m_nPathLength % kLengths] & Bit(line.m_escaped.back())) != 0;
    }

private:
    static constexpr std::size_t kLengths = 512;
    // The case of a letter is in the bits left out.
    static constexpr std::uint32_t Bit(char c) { return std::uint32_t{1} << (static_cast<unsigned char>(c) % 32); }

    std::array<std::uint32_t, kLengths> m_endings{};
};

}  // namespace

CRegistryLookup::CRegistryLookup(std::string_view text, const std::vector<std::string>& keys) {
    for (const std::string& key : keys) {
        AddWanted(key, false);
        for (std::size_t at = key.find('\\'); at != std::string::npos; at = key.find('\\', at + 1)) {
            AddWanted(std::string_view(key).substr(0, at), true);
        }
    }
    CLineFilter filter;
    for (const CWanted& wanted : m_wanted) {
        if (!wanted.m_path.empty()) filter.Add(wanted.m_path);
    }

    CRegistryText reader(text);
    CRegistryText::CKey key;
    std::string_view line;
    while (reader.FindKeyLine(line)) {
        const CKeyLine look = LookAt(line);
        CWanted* wanted = nullptr;
        if (look.m_bPlain) {
            if (!filter.Admits(look)) continue;
            const auto found = std::find_if(m_wanted.begin(), m_wanted.end(), [&look](const CWanted& candidate) {
                return candidate.m_path.size() == look.m_nPathLength && IsPlainLineOf(look.m_escaped, candidate.m_path);
            });
            if (found == m_wanted.end()) continue;
            wanted = &*found;
        }
        if (!reader.ReadKey(key)) continue;
        if (wanted == nullptr) wanted = FindWanted(key.m_path);
        if (wanted != nullptr) ReadValues(reader, key.m_bIsLink, *wanted);
    }
    m_problem = reader.GetProblem();
    m_bHeader = reader.HasHeader();
    m_bCut = reader.IsCut();
}

void CRegistryLookup::ReadValues(CRegistryText& reader, bool isLink, CWanted& wanted) {
    CRegistryText::CValue value;
    while (reader.NextValue(value)) {
        if (isLink && value.m_dwType == REG_LINK && KeyNamesEqual(value.m_name, "SymbolicLinkValue")) {
            wanted.m_target = CRegistryText::TextFromUtf16(value.m_data);
        } else if (!wanted.m_bLinkOnly) {
            wanted.m_values.push_back({std::string(value.m_name), value.m_dwType, std::string(value.m_data)});
        }
    }
}

std::optional<std::string> CRegistryLookup::FindText(std::string_view key, std::string_view name) const {
    const CValue* const value = FindValue(key, name);
    if (value == nullptr || (value->m_dwType != REG_SZ && value->m_dwType != REG_EXPAND_SZ)) return std::nullopt;
    return value->GetText();
}

std::optional<std::uint32_t> CRegistryLookup::FindNumber(std::string_view key, std::string_view name) const {
    const CValue* const value = FindValue(key, name);
    if (value == nullptr || value->m_dwType != REG_DWORD || value->m_data.size() != 4) return std::nullopt;
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;) {
        number = number << 8 | static_cast<unsigned char>(value->m_data[i]);
    }
    return number;
}

const std::vector<CRegistryLookup::CValue>& CRegistryLookup::GetValues(std::string_view key) const {
    static const std::vector<CValue> kNone;
    const CWanted* const wanted = FindWanted(key);
    assert(wanted != nullptr && !wanted->m_bLinkOnly);
    return wanted == nullptr ? kNone : wanted->m_values;
}

std::optional<std::string> CRegistryLookup::FindLink(std::string_view key) const {
    for (std::size_t at = 0; at != key.size();) {
        at = std::min(key.find('\\', at + 1), key.size());
        const CWanted* const wanted = FindWanted(key.substr(0, at));
        assert(wanted != nullptr);
        if (wanted != nullptr && !wanted->m_target.empty()) return wanted->m_target + std::string(key.substr(at));
    }
    return std::nullopt;
}

void CRegistryLookup::AddWanted(std::string_view path, bool linkOnly) {
    CWanted* const present = FindWanted(path);
    if (present == nullptr) {
        m_wanted.push_back({std::string(path), {}, {}, linkOnly});
    } else if (!linkOnly) {
        present->m_bLinkOnly = false;
    }
}

const CRegistryLookup::CWanted* CRegistryLookup::FindWanted(std::string_view path) const {
    const auto found = std::find_if(m_wanted.begin(), m_wanted.end(),
                                    [path](const CWanted& wanted) { return KeyNamesEqual(wanted.m_path, path); });
    return found == m_wanted.end() ? nullptr : &*found;
}

CRegistryLookup::CWanted* CRegistryLookup::FindWanted(std::string_view path) {
    return const_cast<CWanted*>(std::as_const(*this).FindWanted(path));
}

const CRegistryLookup::CValue* CRegistryLookup::FindValue(std::string_view key, std::string_view name) const {
    const std::vector<CValue>& values = GetValues(key);
    const auto found = std::find_if(values.rbegin(), values.rend(),
                                    [name](const CValue& value) { return KeyNamesEqual(value.m_name, name); });
    return found == values.rend() ? nullptr : &*found;
}

}  // namespace delvane
