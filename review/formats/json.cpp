#include "review/formats/json.h"

#include "capture/extensions.h"
#include "capture/files.h"
#include "capture/registry.h"
#include "review/change_list.h"

namespace delvane {
namespace {

void WriteFileFields(CJson& json, const CDelvFileObj& file, bool hasSize) {
    if (hasSize) json.Number("size", file.GetSize());
    json.Text("written", IsoTime(file.m_ftLastWrite.GetTicks()));
    json.Text("created", IsoTime(file.m_ftCreation.GetTicks()));
    json.BeginList("attributes");
    for (const CString& word : AttributeWords(file.m_dwAttributes))
        json.Text({}, word);
    json.EndList();
}

void WriteValueFields(CJson& json, const CDelvRegValObj& value) {
    json.Text("type", TypeWord(value.m_dwType));
    const CValueData data = DescribeData(value);
    switch (data.m_form) {
        case CValueData::EForm::kText:
            json.Text("data", data.m_strText);
            break;
        case CValueData::EForm::kNumber:
            json.Number("data", data.m_nNumber);
            break;
        case CValueData::EForm::kBigNumber:
            json.Text("data", std::to_string(data.m_nNumber));
            break;
        case CValueData::EForm::kTexts:
            json.BeginList("data");
            for (const CString& text : data.m_texts)
                json.Text({}, text);
            json.EndList();
            break;
        case CValueData::EForm::kHex:
            break;
    }
    if (data.m_bHex) json.Text("hex", HexText(value.m_data));
}

void WriteExtensionFields(CJson& json, const CDelvExtObj& extension) {
    json.Text("fileType", extension.m_strFileType);
    json.Text("icon", extension.m_strIcon);
    json.Text("openCommand", extension.m_strOpenCommand);
    json.Flag("noOpen", extension.m_bNoOpen != 0);
    json.Flag("registered", extension.m_pKey != nullptr);
}

}  // namespace

void CJson::Text(std::string_view key, std::string_view text) {
    Name(key);
    if (IsCleanText(text)) return Quote(text);
    m_bLossy = true;
    Quote(CleanText(text));
}

void CJson::EndLine(std::ostream& stream) {
    m_strText += '\n';
    stream.write(m_strText.data(), static_cast<std::streamsize>(m_strText.size()));
    m_strText.clear();
    m_bFirst = true;
}

void CJson::Name(std::string_view key) {
    if (!m_bFirst) m_strText += ',';
    m_bFirst = false;
    if (key.empty()) return;
    Quote(key);
    m_strText += ':';
}

void CJson::Quote(std::string_view clean) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    m_strText += '"';
    for (const char c : clean) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            ((m_strText += "\\u00") += kDigits[byte >> 4]) += kDigits[byte & 0xF];
        } else {
            if (c == '"' || c == '\\') m_strText += '\\';
            m_strText += c;
        }
    }
    m_strText += '"';
}

void WriteNodeFields(CJson& json, const CDelvObj& node, EKind kind) {
    switch (kind) {
        case EKind::kFile:
        case EKind::kDirectory:
            return WriteFileFields(json, static_cast<const CDelvFileObj&>(node), kind == EKind::kFile);
        case EKind::kValue:
            return WriteValueFields(json, static_cast<const CDelvRegValObj&>(node));
        case EKind::kExtension:
            return WriteExtensionFields(json, static_cast<const CDelvExtObj&>(node));
        case EKind::kKey:
            return;
    }
}

void WriteSnapshotFields(CJson& json, const CSnapshotRecord& record) {
    json.Text("name", record.m_strName);
    json.Text("created", IsoTime(record.m_nCreated));
    json.Text("machine", record.m_strMachine);
    json.Text("user", record.m_strUser);
    json.Text("system", record.m_strSystem);
    json.Text("file", record.m_strFile);
}

}  // namespace delvane
