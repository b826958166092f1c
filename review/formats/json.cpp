#include "review/formats/json.h"

#include <algorithm>

#include "capture/extensions.h"
#include "capture/files.h"
#include "capture/registry.h"
#include "review/change_list.h"

namespace delvane {
namespace {

void WriteValueFields(CJson& json, const CDelvRegValObj& value) {
    json.Put("type", TypeWord(value.m_dwType));
    using enum CValueData::EForm;
    const CValueData data = DescribeData(value);
    if (data.m_form == kText) json.Put("data", data.m_text);
    if (data.m_form == kNumber) json.Put("data", data.m_nNumber);
    if (data.m_form == kBigNumber) json.Put("data", std::to_string(data.m_nNumber));
    if (data.m_form == kTexts) {
        json.BeginList("data");
        for (std::string_view rest = data.m_text; !rest.empty();) {
            const std::string_view text = rest.substr(0, rest.find('\0'));
            json.Put({}, text);
            rest.remove_prefix(std::min(text.size() + 1, rest.size()));
        }
        json.EndList();
    }
    if (data.m_bHex) json.Put("hex", HexText(value.m_data));
}

}  // namespace

void CJson::Put(std::string_view key, std::string_view text) {
    Name(key);
    if (IsCleanText(text)) return Quote(text);
    m_bLossy = true;
    Quote(CleanText(text));
}

void CJson::EndLine() {
    m_strText += '\n';
    m_stream.write(m_strText.data(), static_cast<std::streamsize>(m_strText.size()));
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
    m_strText += '"';
    for (const char c : clean) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            m_strText += Printed("\\u%04x", byte);
        } else {
            if (c == '"' || c == '\\') m_strText += '\\';
            m_strText += c;
        }
    }
    m_strText += '"';
}

void WriteNodeFields(CJson& json, const CDelvObj& node, EKind kind) {
    if (kind == EKind::kValue) return WriteValueFields(json, static_cast<const CDelvRegValObj&>(node));
    if (kind == EKind::kExtension) {
        const auto& extension = static_cast<const CDelvExtObj&>(node);
        json.Put("fileType", extension.m_strFileType);
        json.Put("icon", extension.m_strIcon);
        json.Put("openCommand", extension.m_strOpenCommand);
        json.Put("noOpen", extension.m_bNoOpen != 0);
        json.Put("registered", extension.m_pKey != nullptr);
    } else if (kind != EKind::kKey) {
        const auto& file = static_cast<const CDelvFileObj&>(node);
        if (kind == EKind::kFile) json.Put("size", file.GetSize());
        json.Put("written", IsoTime(file.m_ftLastWrite.GetTicks()));
        json.Put("created", IsoTime(file.m_ftCreation.GetTicks()));
        json.PutList("attributes", AttributeWords(file.m_dwAttributes));
    }
}

void WriteSnapshotFields(CJson& json, const CSnapshot& snapshot, const CString& file) {
    json.Put("name", snapshot.m_name);
    json.Put("created", IsoTime(snapshot.GetCreatedTicks()));
    json.Put("machine", snapshot.m_strComputerName);
    json.Put("user", snapshot.m_strUserName);
    json.Put("system", snapshot.m_strOsName);
    json.Put("file", file);
}

}  // namespace delvane
