// The registry's section of the page. This build compares no registry, so it has nothing to write.
#pragma once

#include "report/base.h"

namespace delvane {

class CRegistryReport : public CReportObj {
public:
    CObjectList m_uninstallAdded;  // added keys and values under the Uninstall key
};

}  // namespace delvane
