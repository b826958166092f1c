#include "review/gap_list.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "review/change_list.h"
#include "review/describe.h"

namespace delvane {
namespace {

using CJsonValue = nlohmann::json;

CReviewGap GapOf(const CJsonValue& record) {
    CReviewGap gap;
    const CString kind = record.at("kind");
    std::size_t known = 0;
    while (known < kGapKindCount && GapKindName(static_cast<EGapKind>(known)) != kind)
        ++known;
    if (known == kGapKindCount) throw std::invalid_argument("unknown kind \"" + kind + "\"");
    gap.m_kind = static_cast<EGapKind>(known);
    gap.m_strPath = record.at("path");
    gap.m_strName = record.value("name", CString());
    gap.m_dwCode = record.value("code", std::uint32_t{0});
    gap.m_strReason = record.value("reason", CString());
    gap.m_bLossy = record.value("lossy", false);
    return gap;
}

}  // namespace

bool ReadGaps(std::string_view text, std::vector<CReviewGap>& gaps, CString& problem) {
    for (std::size_t line = 1; !text.empty(); ++line) {
        const std::string_view record = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(record.size() + 1, text.size()));
        if (record.find_first_not_of(" \t\r") == std::string_view::npos) continue;
        try {
            const CJsonValue object = CJsonValue::parse(record);
            if (object.value("record", CString()) == "gap") gaps.push_back(GapOf(object));
        } catch (const std::exception& error) {
            problem = "line " + std::to_string(line) + ": " + error.what();
            return false;
        }
    }
    return true;
}

// A gap is told in clean text, so paths of changes are made clean before they are looked up. A registry file that is
// not whole leaves its keys in doubt: the part of the registry that it holds, and of HKCR what comes out of that.
void CGapIndex::Add(const CReviewGap& gap) {
    static constexpr std::pair<std::string_view, std::string_view> kParts[] = {
        {"system.reg", "HKLM"},  {"system.reg", "HKCR"},
        {"user.reg", "HKCU"},    {"software", "HKLM\\Software"},
        {"software", "HKCR"},    {"system", "HKLM\\System"},
        {"sam", "HKLM\\SAM"},    {"security", "HKLM\\Security"},
        {"ntuser.dat", "HKCU"},  {"usrclass.dat", "HKCU\\Software\\Classes"},
        {"usrclass.dat", "HKCR"}};
    CString place = FoldCase(gap.m_strPath);
    if (gap.m_kind == EGapKind::kRegistryFile) {
        const CString name = place.substr(place.find_last_of("\\/") + 1);  // from 0 where there is none
        for (const auto& [file, key] : kParts) {
            if (FoldCase(file) == name) m_places.insert(FoldCase(key));
        }
    }
    while (place.ends_with('\\'))
        place.pop_back();
    if (gap.m_kind == EGapKind::kValue) place += '\0' + FoldCase(gap.m_strName);
    m_places.insert(std::move(place));
}

bool CGapIndex::Covers(const CChange& change) const {
    if (m_places.empty()) return false;
    CString place = FoldCase(CleanText(change.m_path));
    if (const auto name = change.GetValueName(); name && m_places.contains(place + '\0' + FoldCase(CleanText(*name)))) {
        return true;
    }
    while (!m_places.contains(place)) {
        const std::size_t end = place.rfind('\\');
        if (end == CString::npos) return false;
        place.resize(end);
    }
    return true;
}

}  // namespace delvane
