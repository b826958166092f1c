// What --version and --help print.
#pragma once

#include "platform/text.h"

namespace delvane {

CString GetVersionText();
CString GetUsageText();

}  // namespace delvane
