// Wine's server, which keeps the registry of a prefix in memory while programs run.
#pragma once

#include <string>

namespace delvane {

// Whether a server holds the prefix: changes of the last half minute are not in its files then. The folder is told in
// full. False as well where another user's server cannot be seen.
bool IsWineRunning(const std::string& prefix);

}  // namespace delvane
