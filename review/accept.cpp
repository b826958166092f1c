#include "review/accept.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "review/change_list.h"
#include "review/describe.h"
#include "review/rules.h"
#include "review/toml.h"

namespace delvane {
namespace {

constexpr std::array<std::string_view, 7> kKeys = {"path", "name", "kind", "change", "finding", "reason", "until"};

// Reads one list. Every fault is noted with its place, and all of them are told at once.
class CListReader {
public:
    CListReader(std::string_view file, std::uint64_t today)
        : m_strFile(file), m_strToday(IsoTime(today).substr(0, 10)) {}

    std::vector<CAcceptEntry> Read(std::string_view text) {
        toml::table list;
        try {
            list = toml::parse(text, m_strFile);
        } catch (const toml::parse_error& error) {
            Fault(error.source(), error.description());
            Throw();
        }
        std::vector<CAcceptEntry> entries;
        for (const auto& [key, node] : list) {
            if (key != "accept" || !node.is_array_of_tables()) {
                Fault(key.source(), key == "accept"
                                        ? "accept is a list of tables, each headed [[accept]]"
                                        : "unknown key \"" + CString(key.str()) + "\"; only [[accept]] is known");
                continue;
            }
            for (const toml::node& table : *node.as_array())
                entries.push_back(ReadEntry(*table.as_table()));
        }
        if (!m_faults.empty()) Throw();
        return entries;
    }
    // For what turns out to be wrong later.
    void Refuse(std::uint32_t line, std::string_view reason) {
        m_faults.push_back({line, 1, CString(reason)});
        Throw();
    }

private:
    struct CFault {
        std::uint32_t m_nLine;
        std::uint32_t m_nColumn;
        CString m_strText;
        auto operator<=>(const CFault&) const = default;
    };

    void Fault(const toml::source_region& place, std::string_view text) {
        // A line a fault, whatever a text of the list holds.
        CString line(text);
        std::replace(line.begin(), line.end(), '\n', ' ');
        m_faults.push_back({place.begin.line, place.begin.column, std::move(line)});
    }
    [[noreturn]] void Throw() {
        constexpr std::size_t kMostTold = 10;  // a draft that was not filled in has hundreds
        std::sort(m_faults.begin(), m_faults.end());
        CString text;
        const std::size_t untold = m_faults.size() - std::min(m_faults.size(), kMostTold);
        m_faults.resize(m_faults.size() - untold);
        for (const CFault& fault : m_faults) {
            (text += text.empty() ? "" : "\n") += m_strFile + ":" + std::to_string(fault.m_nLine) + ":" +
                                                  std::to_string(fault.m_nColumn) + ": " + fault.m_strText;
        }
        if (untold != 0) text += "\n" + m_strFile + ": and " + std::to_string(untold) + " more faults";
        throw CAcceptError(text);
    }

    CAcceptEntry ReadEntry(const toml::table& table) {
        CAcceptEntry entry;
        entry.m_strFile = m_strFile;
        entry.m_nLine = table.source().begin.line;
        for (const auto& [key, node] : table) {
            if (std::find(kKeys.begin(), kKeys.end(), key.str()) == kKeys.end())
                Fault(key.source(), "unknown key \"" + CString(key.str()) + "\"; known are " + Joined(kKeys, ", "));
        }
        const bool hasPath = table.contains("path");
        const bool hasFinding = table.contains("finding");
        if (hasPath == hasFinding) {
            Fault(table.source(),
                  hasPath ? "an entry has a path or a finding, not both" : "an entry needs a path or a finding");
        }
        if (hasFinding) {
            for (const char* const key : {"name", "kind", "change"}) {
                if (table.contains(key)) Fault(table.get(key)->source(), CString(key) + " goes with a path");
            }
        }
        entry.m_strPath = ReadText(table, "path").value_or("");
        entry.m_name = ReadText(table, "name");
        ReadWords(table, "kind", kWords<EKind>, entry.m_kinds);
        ReadWords(table, "change", kWords<EChange>, entry.m_changes);
        if (const std::optional<CString> rule = ReadText(table, "finding")) {
            entry.m_pRule = FindRule(*rule);
            if (entry.m_pRule == nullptr) Fault(table.get("finding")->source(), "unknown rule \"" + *rule + "\"");
        }
        if (!table.contains("reason")) Fault(table.source(), "an entry needs a reason");
        entry.m_strReason = ReadText(table, "reason").value_or("");
        ReadDate(table, entry);
        return entry;
    }

    // A text that is not blank, but for a name, which may be.
    std::optional<CString> ReadText(const toml::table& table, std::string_view key) {
        const toml::node* const node = table.get(key);
        if (node == nullptr) return std::nullopt;
        const std::optional<CString> text = node->value_exact<CString>();
        const bool isBlank = text && text->find_first_not_of(key == "name" ? "" : " \t\r\n") == CString::npos;
        if (text && !isBlank) return text;
        Fault(node->source(), CString(key) + (text ? " is empty" : " is a text"));
        return std::nullopt;
    }

    void ReadWords(const toml::table& table, const char* key, std::span<const std::string_view> words,
                   std::uint8_t& bits) {
        const toml::node* const node = table.get(key);
        if (node == nullptr) return;
        bits = 0;
        const auto readWord = [&](const toml::node& element) {
            const CString word = element.value_or(CString());
            const auto known = std::find(words.begin(), words.end(), word);
            if (!element.is_string() || known == words.end()) {
                Fault(element.source(), CString(key) + " is a list of these words: " + Joined(words, ", "));
            } else {
                bits = static_cast<std::uint8_t>(bits | 1U << (known - words.begin()));
            }
        };
        const toml::array* const list = node->as_array();
        if (list == nullptr || list->empty()) return readWord(*node);
        for (const toml::node& element : *list)
            readWord(element);
    }

    void ReadDate(const toml::table& table, CAcceptEntry& entry) {
        const toml::node* const node = table.get("until");
        if (node == nullptr) return;
        const auto* const date = node->as_date();
        if (date == nullptr)
            return Fault(node->source(), "until is a date, such as 2027-03-31, without quotation marks");
        entry.m_strUntil = Printed("%04u-%02u-%02u", unsigned{date->get().year}, unsigned{date->get().month},
                                   unsigned{date->get().day});
        entry.m_bExpired = m_strToday > entry.m_strUntil;
    }

    CString m_strFile;
    CString m_strToday;
    std::vector<CFault> m_faults;
};

}  // namespace

CString CAcceptEntry::GetPlace() const {
    return m_strFile + ":" + std::to_string(m_nLine) + ": " +
           (m_pRule != nullptr ? CString(m_pRule->m_id) : m_strPath + (m_name ? " " + *m_name : CString()));
}

void CAcceptList::Read(std::string_view file, std::string_view text, std::uint64_t today) {
    CListReader reader(file, today);
    for (CAcceptEntry& entry : reader.Read(text)) {
        const auto number = static_cast<std::uint32_t>(m_entries.size());
        m_entries.push_back(std::move(entry));
        CAcceptEntry& kept = m_entries.back();
        kept.m_nNumber = number + 1;
        if (kept.m_pRule != nullptr || kept.m_bExpired) continue;
        try {
            m_index.Add(kept.m_strPath, kept.m_name, number);
        } catch (const std::invalid_argument& error) {
            reader.Refuse(kept.m_nLine, CString("path ") + error.what());
        }
    }
}

const CAcceptEntry* CAcceptList::Find(const CChange& change) {
    const auto hasBit = [](std::uint8_t bits, auto word) { return (bits >> IndexOf(word) & 1) != 0; };
    const CAcceptEntry* first = nullptr;
    for (const std::uint32_t number : m_index.Find(change.m_path, change.GetValueName())) {
        CAcceptEntry& entry = m_entries[number];
        if (!hasBit(entry.m_kinds, change.m_kind) || !hasBit(entry.m_changes, change.m_change)) continue;
        entry.m_bFits = true;
        if (first == nullptr || &entry < first) first = &entry;
    }
    return first;
}

const CAcceptEntry* CAcceptList::Find(const CRule& rule) {
    const CAcceptEntry* first = nullptr;
    for (CAcceptEntry& entry : m_entries) {
        if (entry.m_pRule != &rule || entry.m_bExpired) continue;
        entry.m_bFits = true;
        if (first == nullptr) first = &entry;
    }
    return first;
}

}  // namespace delvane
