#include "tests/support/environment.h"

#include <cstdlib>

namespace delvane {

void SetVariable(const char* name, const char* value) { setenv(name, value, 1); }

}  // namespace delvane
