#include <cstdlib>
#include <ctime>
#include <string_view>

#include "platform/text.h"
#include "platform/win32/windows.h"

namespace delvane {
namespace {

// Whether the variable TZ names a zone in the run-time library's form, EST5EDT. Elsewhere it may be Europe/Berlin or
// CET, which the library would take for UTC.
bool HasZoneVariable() {
    const char* const zone = std::getenv("TZ");
    if (zone == nullptr) return false;
    const std::string_view name = zone;
    if (name == "UTC" || name == "GMT") return true;
    return name.find_first_of("/:") == std::string_view::npos &&
           name.find_first_of("0123456789") != std::string_view::npos;
}

// Moves a time into the zone of that variable: its difference from UTC in seconds is taken for the nearest time that
// the library can convert.
bool ZoneOfVariable(std::uint64_t& ticks) {
    if (!HasZoneVariable()) return false;
    static const bool zoneIsRead = (_tzset(), true);
    static_cast<void>(zoneIsRead);
    const bool isEarly = ticks < kUnixEpochTicks;
    const std::time_t seconds = isEarly ? 0 : static_cast<std::time_t>((ticks - kUnixEpochTicks) / kTicksPerSecond);
    const std::tm* const local = std::localtime(&seconds);
    const long daylight = local != nullptr && local->tm_isdst > 0 ? 3600 : 0;
    const std::int64_t difference = (daylight - std::int64_t{_timezone}) * static_cast<std::int64_t>(kTicksPerSecond);
    const std::int64_t shifted = static_cast<std::int64_t>(ticks) + difference;
    ticks = shifted < 0 ? 0 : static_cast<std::uint64_t>(shifted);
    return true;
}

}  // namespace

CString LocalTimeText(std::uint64_t ticks, std::string_view format) {
    if (ticks >> 63 != 0) return {};
    const bool isLocal = ZoneOfVariable(ticks);
    const ::FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME universal{};
    if (FileTimeToSystemTime(&time, &universal) == 0) return {};
    // Else it is Windows' own zone, with the rule for daylight saving that is in force now. The run-time library knows
    // no time before 1970.
    SYSTEMTIME local = universal;
    if (!isLocal && SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) == 0) return {};
    std::tm calendar{};
    calendar.tm_year = local.wYear - 1900;
    calendar.tm_mon = local.wMonth - 1;
    calendar.tm_mday = local.wDay;
    calendar.tm_wday = local.wDayOfWeek;
    calendar.tm_hour = local.wHour;
    calendar.tm_min = local.wMinute;
    calendar.tm_sec = local.wSecond;
    return CalendarText(calendar, format);
}

}  // namespace delvane
