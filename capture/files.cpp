#include "capture/files.h"

#include "capture/drives.h"
#include "capture/extensions.h"
#include "core/context.h"
#include "report/base.h"
#include "tree/archive.h"
#include "tree/root.h"

namespace delvane {
namespace {

// Two empty strings and nine words; a directory has two counts more.
constexpr std::size_t kSmallestFileRecord = 2 + 9 * 4;
constexpr std::size_t kSmallestDirRecord = kSmallestFileRecord + 2 * 4;

void NoteExtension(std::string_view fileName, CDelvAllExts& extensions, CCaptureProgress* progress) {
    const std::string_view extension = ExtensionOf(fileName);
    if (!extension.empty()) extensions.AddFileExtension(MakeLower(extension), progress);
}

}  // namespace

CDelvFileObj::CDelvFileObj(CDelvObj* parent, CTextRef name) : CDelvObj(parent, name, {}) { m_bComposed = true; }

CDelvFileObj::CDelvFileObj(CDelvObj* parent, CTextRef name, const CFileWords& words)
    : CDelvObj(parent, name, {}), CFileWords(words) {
    m_bComposed = true;
    m_bCaptured = true;
}

void CDelvFileObj::Serialize(CArchive& archive) {
    CDelvObj::Serialize(archive);
    archive.Transfer(m_dwAttributes);
    archive.Transfer(m_ftCreation);
    archive.Transfer(m_ftLastAccess);
    archive.Transfer(m_ftLastWrite);
    archive.Transfer(m_dwSizeHigh);
    archive.Transfer(m_dwSizeLow);
    m_bCaptured = true;
}

bool CDelvFileObj::Compare(CDelvObj& other, CReportObj& report) {
    if (!CDelvObj::Compare(other, report)) return false;
    const CDelvFileObj& baseline = static_cast<const CDelvFileObj&>(other);
    if (m_ftLastWrite != baseline.m_ftLastWrite || GetSize() != baseline.GetSize()) report.AddChanged(*this, other);
    return true;
}

bool CDelvFileObj::Capture(CCaptureProgress* progress) {
    if (!m_bCaptured) {
        CFileWords& words = *this;
        if (theContext.GetMachine().GetSearches().FindPath(GetFullName(), words) != ERROR_SUCCESS) return false;
        m_bCaptured = true;
    }
    Count(progress, &CCaptureProgress::m_nFiles, kCodeFiles);
    return true;
}

CDelvDirObj* CDelvDirObj::NewSubdir(CArena& arena) { return arena.New<CDelvDirObj>(this, arena); }

void CDelvDirObj::Serialize(CArchive& archive) {
    CDelvFileObj::Serialize(archive);
    archive.Enter();
    CArena& arena = m_files.GetArena();
    archive.TransferList(m_files, kSmallestFileRecord, [&] { return arena.New<CDelvFileObj>(this); });
    archive.TransferList(m_subdirs, kSmallestDirRecord, [&] { return NewSubdir(arena); });
    archive.Leave();
}

CDelvObj* CDelvDirObj::FindObject(std::string_view path) {
    std::string_view rest = path;
    if (CDelvObj::FindObject(SplitPath(rest, '\\')) == nullptr) return nullptr;
    if (rest.empty()) return this;
    if (rest.find('\\') == std::string_view::npos) {
        if (CDelvObj* const file = FindIn(m_files, rest)) return file;
    }
    return FindIn(m_subdirs, rest);
}

bool CDelvDirObj::Compare(CDelvObj& other, CReportObj& report) {
    if (!CDelvFileObj::Compare(other, report)) return false;
    const CDelvDirObj& baseline = static_cast<const CDelvDirObj&>(other);
    CompareLists(m_files, baseline.m_files, report);
    CompareLists(m_subdirs, baseline.m_subdirs, report);
    return true;
}

void CDelvDirObj::ReportAdded(CReportObj& report) {
    report.AddAdded(*this);
    for (CDelvObj* file : m_files)
        file->ReportAdded(report);
    for (CDelvObj* subdir : m_subdirs)
        subdir->ReportAdded(report);
}

void CDelvDirObj::ReportDeleted(CReportObj& report) {
    report.AddDeleted(*this);
    for (CDelvObj* file : m_files)
        file->ReportDeleted(report);
    for (CDelvObj* subdir : m_subdirs)
        subdir->ReportDeleted(report);
}

// One search a directory. Its entries carry all that is recorded of a file, so a child costs no call of its own. A
// directory that cannot be searched stays in the tree with empty lists, and is a gap; the search closes on every way
// out.
bool CDelvDirObj::Capture(CCaptureProgress* progress) {
    CSearchSet& searches = theContext.GetMachine().GetSearches();
    const CString path = GetFullName();
    if (!m_bCaptured) {
        CFileWords& words = *this;
        const std::uint32_t error = searches.FindPath(path, words);
        if (error != ERROR_SUCCESS) {
            NoteGap(path, error);
            return false;
        }
        m_bCaptured = true;
    }
    if (IsExactly<CDelvDirObj>(*this)) Count(progress, &CCaptureProgress::m_nDirs, kCodeDirs);
    const CString& programFiles = *theContext.GetFolder(CSIDL_PROGRAM_FILES);
    CDelvAllExts* const extensions = path.starts_with(programFiles) ? nullptr : RootOf(*this).m_pExtensions;
    std::uint32_t error = ERROR_SUCCESS;
    const std::unique_ptr<CFileSearch> search = searches.Open(path, error);
    CFindData data;
    while (search != nullptr && search->Next(data)) {
        ThrowIfCancelled(progress);
        if (data.m_dwError != ERROR_SUCCESS) {
            RootOf(*this).GetGaps().Add(EGapKind::kEntry, path + "\\" + CString(data.m_name), data.m_dwError);
        }
        if (!data.m_bNameOnly) CaptureEntry(data, extensions, progress);
    }
    if (search != nullptr) error = search->GetError();
    if (error != ERROR_SUCCESS) NoteGap(path, error);
    return true;
}

void CDelvDirObj::NoteGap(const CString& path, std::uint32_t error) {
    const bool isDrive = IsKindOf<CDelvDriveObj>(*this);
    RootOf(*this).GetGaps().Add(isDrive ? EGapKind::kDrive : EGapKind::kDirectory, isDrive ? path + "\\" : path, error);
}

void CDelvDirObj::CaptureEntry(const CFindData& data, CDelvAllExts* extensions, CCaptureProgress* progress) {
    if ((data.m_dwAttributes & FILE_ATTRIBUTE_TEMPORARY) != 0 || !theContext.IsNameAllowed(data.m_name)) return;
    CArena& arena = m_files.GetArena();
    if ((data.m_dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        CDelvDirObj* const subdir = arena.New<CDelvDirObj>(this, arena, arena.Copy(data.m_name), data);
        if (!theContext.IsDirAllowed(subdir->GetFullName())) return;
        subdir->InsertSorted(m_subdirs);
        subdir->Capture(progress);
        return;
    }
    CDelvFileObj* const file = arena.New<CDelvFileObj>(this, arena.Copy(data.m_name), data);
    file->InsertSorted(m_files);
    file->Capture(progress);
    const bool hidden = (data.m_dwAttributes & FILE_ATTRIBUTE_HIDDEN) != 0;
    if (extensions != nullptr && !hidden) NoteExtension(file->m_name, *extensions, progress);
}

}  // namespace delvane
