#include "platform/local_time.h"

#include <ctime>
#include <limits>
#include <type_traits>

namespace mmsbrix::platform {

static_assert(sizeof(std::time_t) == 8, "dates past 2038 need a 64-bit time_t");

std::optional<SYSTEMTIME> toLocalTime(std::uint64_t secondsSince1970) noexcept {
  if (secondsSince1970 > static_cast<std::uint64_t>(std::numeric_limits<std::time_t>::max())) {
    return std::nullopt;
  }
  const auto instant = static_cast<std::time_t>(secondsSince1970);
  std::tm local{};
  if (::localtime_r(&instant, &local) == nullptr) return std::nullopt;
  const std::int64_t year = std::int64_t{local.tm_year} + 1900;
  if (year > std::numeric_limits<std::uint16_t>::max()) return std::nullopt;
  SYSTEMTIME record{};
  record.wYear = static_cast<std::uint16_t>(year);
  record.wMonth = static_cast<std::uint16_t>(local.tm_mon + 1);
  record.wDay = static_cast<std::uint16_t>(local.tm_mday);
  record.wHour = static_cast<std::uint16_t>(local.tm_hour);
  record.wMinute = static_cast<std::uint16_t>(local.tm_min);
  record.wSecond = static_cast<std::uint16_t>(local.tm_sec);
  return record;
}

std::int64_t fromLocalTime(const SYSTEMTIME& local) noexcept {
  std::tm fields{};
  fields.tm_year = local.wYear - 1900;
  fields.tm_mon = local.wMonth - 1;
  fields.tm_mday = local.wDay;
  fields.tm_hour = local.wHour;
  fields.tm_min = local.wMinute;
  fields.tm_sec = local.wSecond;
  fields.tm_isdst = -1;
  return std::mktime(&fields);
}

}  // namespace mmsbrix::platform
