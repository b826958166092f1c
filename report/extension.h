// The extensions' section of the page. This build compares no extensions, so it has nothing to write.
#pragma once

#include "report/base.h"

namespace delvane {

class CExtReport : public CReportObj {};

}  // namespace delvane
