#include "capture/extensions.h"

#include "capture/registry.h"
#include "core/context.h"
#include "report/base.h"
#include "resources/strings.h"
#include "tree/archive.h"
#include "tree/root.h"

namespace delvane {
namespace {

constexpr std::size_t kSmallestRecord = 5 + 4;  // five empty strings and a word

CString PathInClasses(std::string_view name) { return CString("HKCR\\").append(name); }

}  // namespace

void CDelvExtObj::Serialize(CArchive& archive) {
    CDelvObj::Serialize(archive);
    archive.Transfer(m_strFileType);
    archive.Transfer(m_strIcon);
    archive.Transfer(m_strOpenCommand);
    archive.Transfer(m_bNoOpen);
    if (archive.IsStoring()) return;
    m_pKey = RootOf(*this).FindObject(PathInClasses(m_name));
    m_bCaptured = true;
}

bool CDelvExtObj::Compare(CDelvObj& other, CReportObj& report) {
    if (!CDelvObj::Compare(other, report)) return false;
    const CDelvExtObj& baseline = static_cast<const CDelvExtObj&>(other);
    if (mbsicmp(m_strFileType, baseline.m_strFileType) != 0 || mbsicmp(m_strIcon, baseline.m_strIcon) != 0 ||
        mbsicmp(m_strOpenCommand, baseline.m_strOpenCommand) != 0) {
        report.AddChanged(*this, other);
    }
    return true;
}

bool CDelvExtObj::Capture(CCaptureProgress*) {
    if (m_bCaptured) return true;
    m_bCaptured = true;
    // The value that stands at that path below the node: its bytes up to the first NUL, whatever its type.
    const auto take = [this](CTextRef& text, CDelvObj& node, std::string_view path) {
        CDelvObj* const found = node.FindObject(CString(node.m_name).append(path));
        if (found == nullptr || !IsExactly<CDelvRegValObj>(*found)) return false;
        const std::string_view data = static_cast<CDelvRegValObj*>(found)->m_data;
        text = RootOf(*this).GetArena().Copy(data.substr(0, data.find('\0')));
        return true;
    };
    if (!take(m_strFileType, *m_pKey, "\\(default)")) return true;
    CDelvObj* const type = RootOf(*this).FindObject(PathInClasses(m_strFileType));
    if (type == nullptr) return true;
    take(m_strFileType, *type, "\\(default)");
    m_bNoOpen = type->FindObject(CString(type->m_name).append("\\NoOpen")) != nullptr ? 1 : 0;
    take(m_strIcon, *type, "\\DefaultIcon\\(default)");
    take(m_strOpenCommand, *type, "\\shell\\open\\command\\(default)");
    return true;
}

bool CDelvExtObj::IsProperlyRegistered() const {
    return !m_strFileType.empty() && !m_strIcon.empty() && (!m_strOpenCommand.empty() || m_bNoOpen != 0);
}

CDelvAllExts::CDelvAllExts(CTreeRoot& root) : CDelvObj(&root), m_extensions(root.GetArena()) {
    m_name = root.GetArena().Copy(LoadResString(IDS_MY_COMPUTER_EXTENSIONS));
    m_fullName = m_name;
    m_bCaptured = true;
}

void CDelvAllExts::Serialize(CArchive& archive) {
    CDelvObj::Serialize(archive);
    CArena& arena = m_extensions.GetArena();
    archive.TransferList(m_extensions, kSmallestRecord, [&] { return arena.New<CDelvExtObj>(this); });
    for (CDelvObj* extension : m_extensions)
        m_byName[extension->m_name] = extension;
}

CDelvObj* CDelvAllExts::FindObject(std::string_view name) {
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? nullptr : found->second;
}

bool CDelvAllExts::Compare(CDelvObj& other, CReportObj& report) {
    if (!CDelvObj::Compare(other, report)) return false;
    CDelvAllExts& baseline = static_cast<CDelvAllExts&>(other);
    const bool wanted = theContext.m_bExtensions;
    if (wanted && m_extensions.empty()) report.AddWarning(4, *this, IDS_CURRENT_WITHOUT_EXTENSIONS);
    if (wanted && baseline.m_extensions.empty()) report.AddWarning(4, baseline, IDS_BASELINE_WITHOUT_EXTENSIONS);
    if (m_extensions.empty() || baseline.m_extensions.empty()) return false;
    if (wanted) CompareLists(m_extensions, baseline.m_extensions, report);
    return true;
}

void CDelvAllExts::AddRegisteredExtension(CDelvRegKeyObj& key, CCaptureProgress* progress) {
    if (!theContext.m_bExtensions) return;
    if (auto* const known = static_cast<CDelvExtObj*>(FindObject(key.m_name))) {
        if (known->m_pKey != nullptr) return;
        known->m_pKey = &key;
        known->Capture(progress);
    } else {
        Add(m_extensions.GetArena().Copy(MakeLower(key.m_name)), &key).Capture(progress);
    }
    Count(progress, &CCaptureProgress::m_nExtensions, kCodeExtensions);
}

void CDelvAllExts::AddFileExtension(const CString& name, CCaptureProgress* progress) {
    if (!theContext.m_bExtensions || FindObject(name) != nullptr) return;
    Add(m_extensions.GetArena().Copy(name), nullptr);
    Count(progress, &CCaptureProgress::m_nExtensions, kCodeExtensions);
}

CDelvExtObj& CDelvAllExts::Add(CTextRef name, CDelvObj* key) {
    CDelvExtObj* const extension = m_extensions.GetArena().New<CDelvExtObj>(this, name, key);
    m_extensions.push_back(extension);
    m_byName[extension->m_name] = extension;
    return *extension;
}

}  // namespace delvane
