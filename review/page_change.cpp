// A change on the page of a review.
#include <algorithm>
#include <array>
#include <cstdio>

#include "capture/extensions.h"
#include "capture/files.h"
#include "capture/registry.h"
#include "review/describe.h"
#include "review/page_parts.h"
#include "review/rules.h"

namespace delvane {
namespace {

constexpr std::string_view kDot = " \u00B7 ";
constexpr std::uint32_t kPlainFile = FILE_ATTRIBUTE_ARCHIVE;
constexpr std::uint32_t kPlainDirectory = FILE_ATTRIBUTE_DIRECTORY;

// "10 bytes", "1.2 MB (1234567 bytes)"
CString SizeText(std::uint64_t size) {
    const CString exact = std::to_string(size) + (size == 1 ? " byte" : " bytes");
    if (size < 10'000) return exact;
    constexpr std::array<std::string_view, 6> kUnits = {"KB", "MB", "GB", "TB", "PB", "EB"};
    std::size_t unit = 0;
    auto number = static_cast<double>(size) / 1000;
    for (; number >= 999.95 && unit + 1 < kUnits.size(); number /= 1000)
        ++unit;
    const auto tenths = static_cast<std::uint64_t>(number * 10 + 0.5);
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " " + CString(kUnits[unit]) + " (" +
           exact + ")";
}

CString Joined(const std::vector<CString>& words) {
    CString text;
    for (const CString& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

template <std::size_t Count>
CString BitWords(const std::array<std::string_view, Count>& words, unsigned bits) {
    std::vector<CString> chosen;
    for (std::size_t i = 0; i < Count; ++i) {
        if ((bits >> i & 1) != 0) chosen.emplace_back(words[i]);
    }
    return Joined(chosen);
}

// A time; with all its decimals where it would look like another one that it is not.
CString TimeText(std::uint64_t ticks, std::uint64_t opposite) {
    if (ticks == opposite || ticks / kTicksPerSecond != opposite / kTicksPerSecond) return PageTime(ticks);
    return IsoTime(ticks);
}

// What a side of a change writes: its node, and the opposite one or null.
void WriteFile(CPageText& page, const CDelvFileObj& file, const CDelvFileObj* opposite, std::string_view tag,
               bool hasSize) {
    const CDelvFileObj& other = opposite == nullptr ? file : *opposite;
    const auto writeTime = [&](std::string_view word, const FILETIME& time, const FILETIME& otherTime) {
        page.Raw(word).Field(TimeText(time.GetTicks(), otherTime.GetTicks()), tag, time != otherTime);
    };
    if (hasSize) page.Field(SizeText(file.GetSize()), tag, file.GetSize() != other.GetSize()).Raw(kDot);
    writeTime("written ", file.m_ftLastWrite, other.m_ftLastWrite);
    // What is as nearly always is left to the lines: made when it was written, with its plain attribute.
    const std::uint64_t age = file.m_ftLastWrite.GetTicks() - file.m_ftCreation.GetTicks();
    if (file.m_ftCreation != other.m_ftCreation || age >= kTicksPerSecond) {
        writeTime(" \u00B7 created ", file.m_ftCreation, other.m_ftCreation);
    }
    const std::uint32_t plain = hasSize ? kPlainFile : kPlainDirectory;
    if (file.m_dwAttributes == plain && other.m_dwAttributes == plain) return;
    const CString attributes = Joined(AttributeWords(file.m_dwAttributes));
    page.Raw(kDot).Field(attributes.empty() ? CString("no attributes") : attributes, tag,
                         file.m_dwAttributes != other.m_dwAttributes);
}

// The data of a value as text, with the bytes below it where they say more.
struct CDataText {
    explicit CDataText(const CDelvRegValObj& value) : m_hasText(true), m_form(EText::kData) {
        CValueData data = DescribeData(value);
        m_hasDump = data.m_bHex;
        std::array<char, 64> number{};
        const auto text = static_cast<unsigned long long>(data.m_nNumber);
        switch (data.m_form) {
            case CValueData::EForm::kText:
                m_strText = std::move(data.m_strText);
                break;
            case CValueData::EForm::kNumber:
                std::snprintf(number.data(), number.size(), "0x%08llx (%llu)", text, text);
                m_strText = number.data();
                m_isNumber = true;
                break;
            case CValueData::EForm::kBigNumber:
                std::snprintf(number.data(), number.size(), "0x%016llx (%llu)", text, text);
                m_strText = number.data();
                m_isNumber = true;
                break;
            case CValueData::EForm::kTexts:
                m_form = EText::kList;
                for (const CString& line : data.m_texts)
                    (m_strText += &line == data.m_texts.data() ? std::string_view() : std::string_view("\0", 1)) +=
                        line;
                break;
            case CValueData::EForm::kHex:
                m_hasText = false;
                break;
        }
    }

    bool m_hasText;
    bool m_hasDump = false;
    bool m_isNumber = false;
    EText m_form;
    CString m_strText;
};

CSide SideOf(std::string_view text, std::string_view opposite, std::string_view tag) {
    const CDifference difference = FindDifference(text, opposite);
    return {tag, text, opposite, difference.m_before};
}

void WriteValue(CPageText& page, const CDelvRegValObj& value, const CDelvRegValObj* opposite, std::string_view tag) {
    const CDelvRegValObj& other = opposite == nullptr ? value : *opposite;
    page.Field(TypeWord(value.m_dwType), tag, value.m_dwType != other.m_dwType).Raw(" ");
    const CDataText data(value);
    const CDataText otherData(other);
    if (data.m_hasText) {
        CSide side = SideOf(data.m_strText, otherData.m_hasText ? otherData.m_strText : CString(), tag);
        if (data.m_isNumber && data.m_strText != otherData.m_strText) side.m_part = {0, data.m_strText.size()};
        page.Data(side, data.m_form);
    }
    if (data.m_hasDump) page.Dump(SideOf(value.m_data, other.m_data, tag));
}

void WriteExtension(CPageText& page, const CDelvExtObj& extension, const CDelvExtObj* opposite, std::string_view tag) {
    const CDelvExtObj& other = opposite == nullptr ? extension : *opposite;
    const auto write = [&](std::string_view label, std::string_view text, std::string_view otherText) {
        page.Raw(label).Raw(" ").Data(SideOf(text, otherText, tag), EText::kLine).Raw(kDot);
    };
    write("file type", extension.m_strFileType, other.m_strFileType);
    write("icon", extension.m_strIcon, other.m_strIcon);
    write("open command", extension.m_strOpenCommand, other.m_strOpenCommand);
    const auto flag = [&](std::string_view yes, std::string_view no, bool is, bool otherIs) {
        page.Field(is ? yes : no, tag, is != otherIs);
    };
    flag("NoOpen", "without NoOpen", extension.m_bNoOpen != 0, other.m_bNoOpen != 0);
    page.Raw(kDot);
    flag("registered", "not registered", extension.m_pKey != nullptr, other.m_pKey != nullptr);
}

void WriteSide(CPageText& page, EKind kind, const CDelvObj& node, const CDelvObj* opposite, std::string_view tag) {
    switch (kind) {
        case EKind::kFile:
        case EKind::kDirectory:
            return WriteFile(page, static_cast<const CDelvFileObj&>(node), static_cast<const CDelvFileObj*>(opposite),
                             tag, kind == EKind::kFile);
        case EKind::kValue:
            return WriteValue(page, static_cast<const CDelvRegValObj&>(node),
                              static_cast<const CDelvRegValObj*>(opposite), tag);
        case EKind::kExtension:
            return WriteExtension(page, static_cast<const CDelvExtObj&>(node),
                                  static_cast<const CDelvExtObj*>(opposite), tag);
        case EKind::kKey:
            if (IsLinkKey(static_cast<const CDelvRegKeyObj&>(node))) {
                page.Raw("a link to another key: <code>.reg</code> files delete it through the link, and it may stay");
            }
            return;
    }
}

}  // namespace

CString PageTime(std::uint64_t ticks) {
    CString text = IsoTime(ticks);
    text.replace(text.find('.'), CString::npos, " UTC");
    text[text.find('T')] = ' ';
    return text;
}

CPagePlace::CPagePlace(const CChange& change)
    : m_nRank(static_cast<int>(kAreaWords.size())),
      m_hive(change.GetHive()),
      m_kind(change.m_kind),
      m_change(change.m_change) {
    if (change.m_kind == EKind::kExtension) {
        m_nRank += 2;
    } else if (!m_hive.empty()) {
        m_nRank += 1;
    } else if (change.m_areas != 0) {
        m_nRank = 0;
        while (!change.HasArea(static_cast<EArea>(m_nRank)))
            ++m_nRank;
    }
}

std::string_view CPagePlace::GetArea() const {
    const auto rank = static_cast<std::size_t>(m_nRank);
    return rank < kAreaWords.size() ? kAreaWords[rank] : std::string_view();
}

CString CPagePlace::GetTitle() const {
    static constexpr std::array<std::string_view, kAreaWords.size() + 1> kTitles = {
        "Program files", "Windows", "Start menu", "Application data", "Documents", "Outside of all areas", "Elsewhere"};
    if (m_kind == EKind::kExtension) return "File extensions";
    if (!m_hive.empty()) return CString(m_hive);
    return CString(kTitles[static_cast<std::size_t>(m_nRank)]);
}

void WriteChangeItem(CPageText& page, const CChange& change, std::uint8_t requirements, std::size_t entry) {
    page.Raw("<li id=\"c").Number(change.m_nId).Raw("\"");
    if (change.m_status != EStatus::kOpen)
        page.Raw(" class=\"settled\" data-status=\"").Raw(WordOf(change.m_status)).Raw("\"");
    if ((change.m_areas & (change.m_areas - 1)) != 0) {
        page.Raw(" data-area=\"").Raw(BitWords(kAreaWords, change.m_areas)).Raw("\"");
    }
    if (requirements != 0) {
        static constexpr std::array<std::string_view, kRequirementCount> kDigits = {"0", "1", "2", "3",
                                                                                    "4", "5", "6", "7"};
        page.Raw(" data-requirement=\"").Raw(BitWords(kDigits, requirements)).Raw("\"");
    }
    page.Raw("><a href=\"#c").Number(change.m_nId).Raw("\">#").Number(change.m_nId).Raw("</a> ");
    page.Object(change.m_path, change.m_kind == EKind::kValue ? &change.m_name : nullptr).Raw(" ");
    if (change.m_bUncertain) page.Raw("<strong>uncertain</strong> ");
    if (change.m_status == EStatus::kNoise) page.Raw("<em>noise</em> ");
    if (change.m_pEntry != nullptr) {
        page.Raw("<em>accepted by entry ").Number(entry).Raw(": ").Text(change.GetReason()).Raw("</em> ");
    }
    const CString traits = BitWords(kTraitWords, change.m_traits);
    if (!traits.empty()) page.Raw(traits).Raw(kDot);
    if (!change.m_version.empty()) page.Raw("version ").Text(change.m_version).Raw(kDot);
    if (change.m_change == EChange::kChanged) {
        page.Raw("<div class=\"sides\"><div>before: ");
        WriteSide(page, change.m_kind, *change.m_pBefore, change.m_pAfter, "del");
        page.Raw("</div><div>after: ");
        WriteSide(page, change.m_kind, *change.m_pAfter, change.m_pBefore, "ins");
        page.Raw("</div></div>");
    } else {
        WriteSide(page, change.m_kind, change.GetNode(), nullptr, {});
    }
    page.Raw("\n");
}

}  // namespace delvane
