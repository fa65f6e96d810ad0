// By the system's calendar functions, which count in 64 bits; the C library's default time does
// not.
#include "platform/local_time.h"

#include <windows.h>

#include <limits>

namespace mmsbrix::platform {
namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;  // of 100 ns
/// From the beginning of the system's calendar, 1601-01-01, to 1970-01-01.
constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;
constexpr std::int64_t kSecondsPerDay = 86'400;

std::optional<SYSTEMTIME> calendarTime(std::int64_t secondsSince1970) noexcept {
  const std::int64_t seconds = secondsSince1970 + kSecondsTo1970;
  if (seconds < 0 || seconds > std::numeric_limits<std::int64_t>::max() / kTicksPerSecond) {
    return std::nullopt;
  }
  ULARGE_INTEGER ticks{};
  ticks.QuadPart = static_cast<ULONGLONG>(seconds * kTicksPerSecond);
  FILETIME instant{};
  instant.dwLowDateTime = ticks.LowPart;
  instant.dwHighDateTime = ticks.HighPart;
  SYSTEMTIME time{};
  if (::FileTimeToSystemTime(&instant, &time) == 0) return std::nullopt;
  return time;
}

std::optional<std::int64_t> secondsSince1970(const SYSTEMTIME& time) noexcept {
  FILETIME instant{};
  if (::SystemTimeToFileTime(&time, &instant) == 0) return std::nullopt;
  ULARGE_INTEGER ticks{};
  ticks.LowPart = instant.dwLowDateTime;
  ticks.HighPart = instant.dwHighDateTime;
  return static_cast<std::int64_t>(ticks.QuadPart) / kTicksPerSecond - kSecondsTo1970;
}

// Days from 1970-01-01 to a date of the Gregorian calendar; months and days may lie beyond their
// range.  Years begin in March here, so that the day that leap years add is their last.
constexpr std::int64_t daysSince1970(std::int64_t year, std::int64_t month,
                                     std::int64_t day) noexcept {
  const std::int64_t monthsSinceMarch = year * 12 + month - 3;
  const std::int64_t marchYear =
      (monthsSinceMarch >= 0 ? monthsSinceMarch : monthsSinceMarch - 11) / 12;
  const std::int64_t monthOfYear = monthsSinceMarch - marchYear * 12;
  const auto floorDivided = [marchYear](std::int64_t by) {
    return (marchYear >= 0 ? marchYear : marchYear - by + 1) / by;
  };
  constexpr std::int64_t kMarchOfYear0 = -719'468;
  return kMarchOfYear0 + marchYear * 365 + floorDivided(4) - floorDivided(100) + floorDivided(400) +
         (monthOfYear * 153 + 2) / 5 + day - 1;
}
static_assert(daysSince1970(1970, 1, 1) == 0 && daysSince1970(2000, 2, 30) == 11'017 &&
              daysSince1970(1999, 14, 1) == daysSince1970(2000, 2, 1) &&
              daysSince1970(1969, 12, 31) == -1);

}  // namespace

std::optional<SYSTEMTIME> toLocalTime(std::uint64_t secondsSince1970) noexcept {
  if (secondsSince1970 > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max() / 2)) {
    return std::nullopt;
  }
  const auto universal = calendarTime(static_cast<std::int64_t>(secondsSince1970));
  SYSTEMTIME local{};
  if (!universal || ::SystemTimeToTzSpecificLocalTime(nullptr, &*universal, &local) == 0) {
    return std::nullopt;
  }
  local.wDayOfWeek = 0;
  local.wMilliseconds = 0;
  return local;
}

std::int64_t fromLocalTime(const SYSTEMTIME& local) noexcept {
  constexpr std::int64_t kNone = -1;
  // As if it were universal time, so that fields beyond their range carry over.
  const std::int64_t seconds =
      daysSince1970(local.wYear, local.wMonth, local.wDay) * kSecondsPerDay + local.wHour * 3600 +
      local.wMinute * 60 + local.wSecond;
  const auto normal = calendarTime(seconds);
  // Before the system's calendar no instant of interest lies; negative is what is told of it.
  if (!normal) return seconds < 0 ? seconds : kNone;
  SYSTEMTIME universal{};
  SYSTEMTIME shown{};
  if (::TzSpecificLocalTimeToSystemTime(nullptr, &*normal, &universal) == 0 ||
      ::SystemTimeToTzSpecificLocalTime(nullptr, &universal, &shown) == 0) {
    return kNone;
  }
  const auto instant = secondsSince1970(universal);
  const auto shownSeconds = secondsSince1970(shown);
  if (!instant || !shownSeconds) return kNone;
  // A time that the clocks pass over is counted on from before, as the C library does it.
  return *instant + (seconds - *shownSeconds);
}

}  // namespace mmsbrix::platform
