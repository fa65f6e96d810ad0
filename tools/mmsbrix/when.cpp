#include "when.h"

#include <mmsbrix/mms/dates.h>

#include <array>
#include <charconv>
#include <chrono>

namespace mmsbrix::tool {
namespace {

// Takes a number of `digits` digits off the front (of any count for 0).
template <class Number>
bool takeNumber(std::string_view& text, std::size_t digits, Number& number) {
  const std::string_view field = digits == 0 ? text : text.substr(0, digits);
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), number);
  const auto taken = static_cast<std::size_t>(end - field.data());
  if (error != std::errc() || taken == 0 || (digits != 0 && taken != digits)) return false;
  text.remove_prefix(taken);
  return true;
}

bool take(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

// "+02:00", "-0330", "Z" or nothing; the offset from UTC in seconds.
bool takeZone(std::string_view& text, bool& utc, std::int64_t& offset) {
  offset = 0;
  utc = take(text, "Z");
  if (utc || text.empty()) return true;
  const int sign = text.front() == '-' ? -1 : 1;
  if (!take(text, "+") && !take(text, "-")) return false;
  int hours = 0;
  int minutes = 0;
  if (!takeNumber(text, 2, hours)) return false;
  take(text, ":");
  if (!text.empty() && !takeNumber(text, 2, minutes)) return false;
  utc = true;
  offset = std::int64_t{sign} * (hours * 3600 + minutes * 60);
  return hours < 24 && minutes < 60;
}

bool inRange(const SYSTEMTIME& record) {
  const std::chrono::year_month_day date{std::chrono::year(record.wYear),
                                         std::chrono::month(record.wMonth),
                                         std::chrono::day(record.wDay)};
  return date.ok() && record.wHour < 24 && record.wMinute < 60 && record.wSecond < 61;
}

}  // namespace

std::optional<std::uint64_t> parseInterval(std::string_view text) {
  struct Unit {
    std::string_view name;
    std::uint64_t seconds;
  };
  constexpr auto kUnits = std::to_array<Unit>(
      {{"w", 604800}, {"d", 86400}, {"h", 3600}, {"min", 60}, {"m", 60}, {"s", 1}});
  constexpr std::uint64_t kMost = std::uint64_t{65536} * 86400;
  if (text.empty()) return std::nullopt;
  std::uint64_t seconds = 0;
  while (!text.empty()) {
    std::uint64_t count = 0;
    if (!takeNumber(text, 0, count)) return std::nullopt;
    std::uint64_t unitSeconds = 0;
    for (const Unit& unit : kUnits) {
      if (take(text, unit.name)) {
        unitSeconds = unit.seconds;
        break;
      }
    }
    if (unitSeconds == 0 || count > kMost / unitSeconds) return std::nullopt;
    seconds += count * unitSeconds;
    if (seconds > kMost) return std::nullopt;
  }
  return seconds;
}

std::optional<std::uint64_t> parseInstant(std::string_view text) {
  if (take(text, "@")) {
    std::uint64_t seconds = 0;
    return takeNumber(text, 0, seconds) && text.empty() ? std::optional(seconds) : std::nullopt;
  }
  SYSTEMTIME record{};
  if (!takeNumber(text, 4, record.wYear) || !take(text, "-") ||
      !takeNumber(text, 2, record.wMonth) || !take(text, "-") ||
      !takeNumber(text, 2, record.wDay)) {
    return std::nullopt;
  }
  bool utc = false;
  std::int64_t offset = 0;
  if (take(text, "T") || take(text, " ")) {
    if (!takeNumber(text, 2, record.wHour) || !take(text, ":") ||
        !takeNumber(text, 2, record.wMinute)) {
      return std::nullopt;
    }
    if (take(text, ":") && !takeNumber(text, 2, record.wSecond)) return std::nullopt;
    if (!takeZone(text, utc, offset)) return std::nullopt;
  }
  if (!text.empty() || !inRange(record)) return std::nullopt;
  const std::int64_t seconds = instantOf(record, utc) - offset;
  return seconds < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(seconds));
}

std::optional<SYSTEMTIME> parseWhen(std::string_view text) {
  if (const auto seconds = parseInterval(text)) return intervalRecord(*seconds);
  const auto seconds = parseInstant(text);
  if (!seconds) return std::nullopt;
  const auto record = instantRecord(*seconds);
  // In the hour that clocks repeat in autumn a local time stands for two instants.
  const bool same = record && instantOf(*record, false) == static_cast<std::int64_t>(*seconds);
  return same ? record : std::nullopt;
}

}  // namespace mmsbrix::tool
