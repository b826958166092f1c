// The file section of the page: what was added, deleted and changed in the file system, sorted by where it lies and by
// what kind of file it is.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "capture/executable.h"
#include "report/base.h"

namespace delvane {

// The areas that files belong into.
enum class EFolderArea { kProgramFiles, kWindows, kStartMenu, kAppData, kDocuments };
// A bit for each area of which a folder is a prefix of the path. The folder itself counts, and so does a sibling whose
// name merely begins with the folder's.
unsigned FindFolderAreas(std::string_view fullName);

// The folders that sort the files are those of the machine and the user that compare, not of the snapshots.
class CFileReport : public CReportObj {
public:
    void AddChanged(CDelvObj& object, CDelvObj& baseline) override;
    void AddDeleted(CDelvObj& object) override;
    void AddAdded(CDelvObj& object) override;

    void WriteSummary(std::ostream& stream) override;
    void WriteDetails(std::ostream& stream) override;
    void WriteRawData(std::ostream& stream) override;
    void WriteChange(std::ostream& stream, CDelvObj& item) override;

    // Appends a copy of the file to the kernel mode executables: a service of the registry names it. No finding.
    void AddKernelService(CDelvFileObj& file);

    std::uint32_t m_nFilesAdded = 0;  // a file is whatever is no directory
    std::uint32_t m_nDirsAdded = 0;
    std::uint32_t m_nFilesChanged = 0;
    std::uint32_t m_nFilesDeleted = 0;
    std::uint32_t m_nDirsDeleted = 0;
    bool m_bStartMenuNoted = false;  // the finding has been filed
    bool m_bSystemExeNoted = false;

    // One object may stand in several of the lists. Those of executables hold copies that m_exeCopies owns.
    CDiffList m_startChanged;
    CObjectList m_startAdded;
    CObjectList m_startDeleted;
    CDiffList m_appDataChanged;
    CObjectList m_appDataAdded;
    CObjectList m_appDataDeleted;
    CDiffList m_docsChanged;
    CObjectList m_docsAdded;
    CObjectList m_docsDeleted;
    CObjectList m_otherAdded;        // outside every known area
    CObjectList m_exesProgramFiles;  // added
    CObjectList m_exesSystemAdded;   // under the Windows directory
    CObjectList m_exesSystemChanged;
    CObjectList m_exesOtherAdded;
    CObjectList m_exesReplaced;  // every changed executable
    CObjectList m_exes16Bit;     // added or changed, as is the next
    CObjectList m_exesKernelMode;
    std::vector<std::unique_ptr<CDelvExeObj>> m_exeCopies;

private:
    template <class List, class... Baseline>
    void SortByFolder(List& start, List& appData, List& docs, bool note, CDelvObj& object, const CString& fullName,
                      Baseline&... baseline);

    static bool IsSystemFile(const CDelvObj& object, const CString& fullName);
    void NoteSystemFile(CDelvObj& object, const CString& fullName);
    // A copy of the file if it is an executable image of any kind on the live disk, else null.
    CDelvExeObj* CopyIfExecutable(CDelvObj& object, const CString& fullName);
    void NoteSystemExe(CDelvObj& object);
    void NoteKind(CDelvExeObj& copy);
    // Appends to a list and files its finding with the first entry.
    void Note(CObjectList& list, CDelvObj& object, int section, std::uint32_t textId);
    CString GetEntryName(const CDelvObj& object) override;
};

}  // namespace delvane
