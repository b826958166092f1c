// The extensions' section of the page, and the judgement of those that an installation has added or changed.
#pragma once

#include <cstdint>

#include "report/base.h"

namespace delvane {

class CDelvExtObj;

class CExtReport : public CReportObj {
public:
    void AddChanged(CDelvObj& object, CDelvObj& baseline) override;
    void AddAdded(CDelvObj& object) override;

    void WriteSummary(std::ostream& stream) override;
    void WriteDetails(std::ostream& stream) override;
    void WriteRawData(std::ostream& stream) override;
    void WriteChange(std::ostream& stream, CDelvObj& item) override;

    // Keeps the extension if it is not properly registered, and files the finding with the first.
    void NoteBadExtension(CDelvObj& extension);
    // Four cells of a row that the caller has opened; the last one is left open.
    static void WriteExtensionCells(std::ostream& stream, const CDelvExtObj& extension);

    std::uint32_t m_nBadExtensions = 0;
    bool m_bBadReported = false;
    CObjectList m_badExtensions;  // of the Current snapshot
};

}  // namespace delvane
