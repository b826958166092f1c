// Transaction logs of registry hives: changes that were written down but have not reached the hive file.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/host.h"
#include "platform/machine.h"

namespace delvane {

// What became of a hive file that may have been cut off from its last changes.
enum class EHiveState {
    kWhole,       // nothing was missing
    kRecovered,   // the logs have completed it
    kUnfinished,  // changes are missing, and no log has them
};

// Applies the logs to the hive in memory, as Windows does when it loads the hive: entries of the newer form in the
// order of their sequence numbers, of each log up to the first that is not whole, or the sectors of a log of the older
// form.
EHiveState ReplayLogs(CFileBytes& hive, const std::vector<CFileBytes>& logs);

// The hash over an entry of a log of the newer form: Marvin32 with the seed that Windows has for logs.
std::uint64_t HashOfLog(std::string_view bytes);

}  // namespace delvane
