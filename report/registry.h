// The registry's section of the page: what was added, deleted and changed in the hives, and the three things about it
// that the requirements ask after.
#pragma once

#include <cstdint>

#include "report/base.h"

namespace delvane {

class CDelvRegValObj;
class CFileReport;

// A key never changes in itself, so only values do.
class CRegistryReport : public CReportObj {
public:
    void AddChanged(CDelvObj& object, CDelvObj& baseline) override;
    void AddDeleted(CDelvObj& object) override;
    void AddAdded(CDelvObj& object) override;

    void WriteSummary(std::ostream& stream) override;
    void WriteDetails(std::ostream& stream) override;
    void WriteRawData(std::ostream& stream) override;
    void WriteChange(std::ostream& stream, CDelvObj& item) override;

    // Files the finding on HKEY_CURRENT_USER with the first object of that hive.
    void NoteHkcu(CDelvObj& object);

    std::uint32_t m_nValuesAdded = 0;
    std::uint32_t m_nKeysAdded = 0;
    std::uint32_t m_nValuesChanged = 0;
    std::uint32_t m_nValuesDeleted = 0;
    std::uint32_t m_nKeysDeleted = 0;
    bool m_bHkcuReported = false;
    CFileReport* m_pFileReport = nullptr;  // the one beside this; set by the master's constructor
    CObjectList m_uninstallAdded;          // added keys and values under the Uninstall key

protected:
    CString GetPartOf(const CDelvObj& object) const override;  // its hive

private:
    void NoteUninstall(CDelvObj& object, const CString& fullName);
    void NoteService(CDelvObj& object, const CString& fullName);
};

// A value's type in a word, and its data as text: strings as they are, numbers with 0x, all else as a dump. Data that
// are shorter than their type calls for count as zeros, and a text ends with its data.
CString ValueTypeName(const CDelvRegValObj& value);
CString ValueDataText(const CDelvRegValObj& value);

}  // namespace delvane
