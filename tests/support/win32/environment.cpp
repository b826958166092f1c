#include "tests/support/environment.h"

#include <cstdlib>
#include <string>

namespace delvane {

void SetVariable(const char* name, const char* value) { _putenv((std::string(name) + "=" + value).c_str()); }

}  // namespace delvane
