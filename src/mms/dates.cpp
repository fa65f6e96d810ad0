#include "mms/dates.h"

#include <chrono>

#include "mms/mms_values.h"
#include "platform/local_time.h"

namespace mmsbrix {

std::optional<SYSTEMTIME> instantRecord(std::uint64_t secondsSince1970) {
  SYSTEMTIME record{};
  setDate(record, secondsSince1970);
  return record.wYear == 0 ? std::nullopt : std::optional(record);
}

std::optional<SYSTEMTIME> intervalRecord(std::uint64_t seconds) {
  constexpr std::uint64_t kDay = 86400;
  if (seconds == 0 || seconds / kDay > 0xFFFF) return std::nullopt;
  SYSTEMTIME record{};
  record.wDay = static_cast<std::uint16_t>(seconds / kDay);
  record.wHour = static_cast<std::uint16_t>(seconds % kDay / 3600);
  record.wMinute = static_cast<std::uint16_t>(seconds % 3600 / 60);
  record.wSecond = static_cast<std::uint16_t>(seconds % 60);
  return record;
}

std::int64_t instantOf(const SYSTEMTIME& record, bool utc) {
  if (!utc) return platform::fromLocalTime(record);
  using namespace std::chrono;
  const year_month monthOfYear = year{record.wYear} / month{1} + months(record.wMonth - 1);
  const sys_days days = sys_days(monthOfYear / day{1}) + std::chrono::days(record.wDay - 1);
  return duration_cast<seconds>(days.time_since_epoch()).count() +
         std::int64_t{record.wHour} * 3600 + std::int64_t{record.wMinute} * 60 + record.wSecond;
}

}  // namespace mmsbrix
