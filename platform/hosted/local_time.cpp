#include <ctime>

#include "platform/text.h"

namespace delvane {

CString LocalTimeText(std::uint64_t ticks, std::string_view format) {
    if (ticks >> 63 != 0) return {};
    // localtime would look at the zone file again at each call; once in a process is enough.
    static const bool zoneIsRead = (tzset(), true);
    static_cast<void>(zoneIsRead);
    const std::int64_t seconds = static_cast<std::int64_t>(ticks / kTicksPerSecond) -
                                 static_cast<std::int64_t>(kUnixEpochTicks / kTicksPerSecond);
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm calendar{};
    if (localtime_r(&time, &calendar) == nullptr) return {};
    return CalendarText(calendar, format);
}

}  // namespace delvane
