// What the program and its Qt module have to do with each other. The module is loaded by name; nothing of either is
// linked to the other.
#pragma once

#include "platform/toolkit.h"

namespace delvane {

// The operation by which the module gives its toolkit, and its name.
using CMakeToolkit = CToolkit*();
inline constexpr const char* kMakeToolkit = "DelvaneMakeToolkit";

}  // namespace delvane
