// The extensions' section of the page, and the judgement of those that an installation has added or changed.
#pragma once

#include "report/base.h"

namespace delvane {

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

    CObjectList m_badExtensions;  // of the Current snapshot
};

}  // namespace delvane
