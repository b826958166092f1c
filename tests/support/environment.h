// Variables of the process's environment.
#pragma once

namespace delvane {

void SetVariable(const char* name, const char* value);

}  // namespace delvane
