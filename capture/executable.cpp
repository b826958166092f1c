#include "capture/executable.h"

#include "core/context.h"

namespace delvane {
namespace {

// U.S. English with code page 1252, then with Unicode; no other language is asked for.
CString QueryVersion(const CVersionInfo& info, std::string_view name) {
    for (const std::string_view language : {"\\StringFileInfo\\040904E4\\", "\\StringFileInfo\\040904B0\\"}) {
        if (const auto text = info.Query(CString(language) + CString(name))) return *text;
    }
    return {};
}

}  // namespace

bool IsExecutableFile(std::string_view path) {
    CLoadedImage image;
    return theContext.GetMachine().MapAndLoad(path, image) || image.fDOSImage;
}

CDelvExeObj::CDelvExeObj(const CDelvFileObj& file) : m_pFile(&file), m_strFullName(EncodeText(file.GetFullName())) {
    m_name = file.m_name;
    m_fullName = CTextRef(m_strFullName.data());
    m_pParent = file.m_pParent;
    static_cast<CFileWords&>(*this) = file;
}

void CDelvExeObj::Analyze() {
    m_bAnalyzed = true;
    CMachine& machine = theContext.GetMachine();
    m_bIsImage = machine.MapAndLoad(m_fullName, m_image) || m_image.fDOSImage;
    if (m_bIsImage == 0) return;
    const std::unique_ptr<const CVersionInfo> info = machine.GetFileVersionInfo(m_fullName);
    if (info == nullptr) return;
    m_strProductVersion = QueryVersion(*info, "ProductVersion");
    m_strFileVersion = QueryVersion(*info, "FileVersion");
}

}  // namespace delvane
