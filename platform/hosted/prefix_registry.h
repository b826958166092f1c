// The registry of a Wine prefix.
#pragma once

#include <memory>
#include <string>

#include "platform/hosted/registry.h"

namespace delvane {

// HKLM is system.reg and HKCU user.reg; HKCR is the machine's classes alone, as Wine has it. A file that cannot be read
// costs its hive and is told as a problem.
std::unique_ptr<CHostedRegistry> LoadPrefixRegistry(const std::string& folder);

}  // namespace delvane
