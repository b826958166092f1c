// A change on the page of a review.
#include <algorithm>
#include <array>

#include "capture/extensions.h"
#include "capture/files.h"
#include "capture/registry.h"
#include "review/change_list.h"
#include "review/describe.h"
#include "review/page_text.h"

namespace delvane {
namespace {

constexpr const char* kDot = " \u00B7 ";

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

// A time; with all its decimals where it would look like another one that it is not.
CString TimeText(std::uint64_t ticks, std::uint64_t opposite) {
    if (ticks == opposite || ticks / kTicksPerSecond != opposite / kTicksPerSecond) return PageTime(ticks);
    return IsoTime(ticks);
}

// What a side of a change writes: its node, held against the other one. Of a change with one side that is itself.
void WriteFile(CPageText& page, const CDelvFileObj& file, const CDelvFileObj& other, std::string_view tag,
               bool hasSize) {
    const auto writeTime = [&](const char* word, const FILETIME& time, const FILETIME& otherTime) {
        (page << word).Field(TimeText(time.GetTicks(), otherTime.GetTicks()), tag, time != otherTime);
    };
    if (hasSize) page.Field(SizeText(file.GetSize()), tag, file.GetSize() != other.GetSize()) << kDot;
    writeTime("written ", file.m_ftLastWrite, other.m_ftLastWrite);
    // What is as nearly always is left to the lines: made when it was written, with its plain attribute.
    const std::uint64_t age = file.m_ftLastWrite.GetTicks() - file.m_ftCreation.GetTicks();
    if (file.m_ftCreation != other.m_ftCreation || age >= kTicksPerSecond) {
        writeTime(" \u00B7 created ", file.m_ftCreation, other.m_ftCreation);
    }
    const std::uint32_t plain = hasSize ? FILE_ATTRIBUTE_ARCHIVE : FILE_ATTRIBUTE_DIRECTORY;
    if (file.m_dwAttributes == plain && other.m_dwAttributes == plain) return;
    const CString attributes = Joined(AttributeWords(file.m_dwAttributes), " ");
    (page << kDot)
        .Field(attributes.empty() ? "no attributes" : attributes, tag, file.m_dwAttributes != other.m_dwAttributes);
}

// The data of a value as text, where they have such a form.
CString DataText(const CValueData& data) {
    const auto number = static_cast<unsigned long long>(data.m_nNumber);
    if (data.m_form == CValueData::EForm::kNumber) return Printed("0x%08llx (%llu)", number, number);
    if (data.m_form == CValueData::EForm::kBigNumber) return Printed("0x%016llx (%llu)", number, number);
    return CString(data.m_text);
}

// A number differs as a whole. Bytes stand below a text where they say more.
void WriteValue(CPageText& page, const CDelvRegValObj& value, const CDelvRegValObj& other, std::string_view tag) {
    using enum CValueData::EForm;
    page.Field(TypeWord(value.m_dwType), tag, value.m_dwType != other.m_dwType) << " ";
    const CValueData data = DescribeData(value);
    const CString text = DataText(data);
    const CString otherText = DataText(DescribeData(other));
    if (data.m_form == kNumber || data.m_form == kBigNumber) {
        (page << "<code>").Field(text, tag, text != otherText) << "</code>";
    } else if (data.m_form != kHex) {
        page.Data({tag, text, otherText}, data.m_form == kTexts ? EText::kList : EText::kData);
    }
    if (data.m_bHex) page.Dump({tag, value.m_data, other.m_data});
}

void WriteExtension(CPageText& page, const CDelvExtObj& extension, const CDelvExtObj& other, std::string_view tag) {
    const auto write = [&](const char* label, std::string_view text, std::string_view otherText) {
        (page << label).Data({tag, text, otherText}, EText::kLine) << kDot;
    };
    write("file type ", extension.m_strFileType, other.m_strFileType);
    write("icon ", extension.m_strIcon, other.m_strIcon);
    write("open command ", extension.m_strOpenCommand, other.m_strOpenCommand);
    const bool isNoOpen = extension.m_bNoOpen != 0;
    page.Field(isNoOpen ? "NoOpen" : "without NoOpen", tag, isNoOpen != (other.m_bNoOpen != 0)) << kDot;
    const bool isRegistered = extension.m_pKey != nullptr;
    page.Field(isRegistered ? "registered" : "not registered", tag, isRegistered != (other.m_pKey != nullptr));
}

void WriteSide(CPageText& page, EKind kind, const CDelvObj& node, const CDelvObj& other, std::string_view tag) {
    switch (kind) {
        case EKind::kFile:
        case EKind::kDirectory:
            return WriteFile(page, static_cast<const CDelvFileObj&>(node), static_cast<const CDelvFileObj&>(other), tag,
                             kind == EKind::kFile);
        case EKind::kValue:
            return WriteValue(page, static_cast<const CDelvRegValObj&>(node), static_cast<const CDelvRegValObj&>(other),
                              tag);
        case EKind::kExtension:
            return WriteExtension(page, static_cast<const CDelvExtObj&>(node), static_cast<const CDelvExtObj&>(other),
                                  tag);
        case EKind::kKey:
            if (IsLinkKey(static_cast<const CDelvRegKeyObj&>(node))) {
                page << "a link to another key: <code>.reg</code> files delete it through the link, and it may stay";
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

void WriteChangeItem(CPageText& page, const CChange& change) {
    page << "<li id=\"c" << change.m_nId << "\"";
    if (!change.IsOpen()) page << " class=\"settled\" data-status=\"" << WordOf(change.m_status) << "\"";
    const std::vector<std::string_view> areas = WordsIn<EArea>(change.m_areas);
    if (areas.size() > 1) page << " data-area=\"" << Joined(areas, " ") << "\"";
    std::vector<CString> numbers;
    for (unsigned i = 0; change.m_requirements >> i != 0; ++i) {
        if ((change.m_requirements >> i & 1) != 0) numbers.push_back(std::to_string(i));
    }
    if (!numbers.empty()) page << " data-requirement=\"" << Joined(numbers, " ") << "\"";
    page << "><a href=\"#c" << change.m_nId << "\">#" << change.m_nId << "</a> ";
    page.Object(change.m_path, change.GetValueName()) << " ";
    if (change.m_bUncertain) page << "<strong>uncertain</strong> ";
    if (change.m_status == EStatus::kNoise) page << "<em>noise</em> ";
    if (change.m_pEntry != nullptr) {
        page << "<em>accepted by entry " << change.m_pEntry->m_nNumber << ": " << change.GetReason() << "</em> ";
    }
    if (change.m_traits != 0) page << Joined(WordsIn<ETrait>(change.m_traits), " ") << kDot;
    if (!change.m_version.empty()) page << "version " << change.m_version << kDot;
    if (change.m_change == EChange::kChanged) {
        page << "<div class=\"sides\"><div>before: ";
        WriteSide(page, change.m_kind, *change.m_pBefore, *change.m_pAfter, "del");
        page << "</div><div>after: ";
        WriteSide(page, change.m_kind, *change.m_pAfter, *change.m_pBefore, "ins");
        page << "</div></div>";
    } else {
        WriteSide(page, change.m_kind, change.GetNode(), change.GetNode(), {});
    }
    page << "\n";
}

}  // namespace delvane
