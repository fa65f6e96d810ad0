#include "wsp/wsp_date.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <limits>

#include "platform/ascii.h"
#include "wsp/report.h"
#include "wsp/wsp_header_reports.h"

namespace WapStack {
namespace {

using mmsbrix::equalsIgnoringCase;

constexpr auto kWeekdays = std::to_array<std::string_view>(
    {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"});
constexpr auto kMonths = std::to_array<std::string_view>(
    {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"});

constexpr std::uint64_t kSecondsPerDay = 86400;
// The calendar repeats after this many days, which are whole weeks, so that every date has a twin
// in the 400 years from 1970 that the standard calendar can reach.
constexpr std::uint64_t kYearsPerCycle = 400;
constexpr std::uint64_t kDaysPerCycle = 146097;
constexpr std::uint64_t kFirstYear = 1970;
static_assert(kDaysPerCycle % 7 == 0);

// Takes a text apart from its front.
class Scanner {
 public:
  explicit Scanner(std::string_view text) noexcept : rest_(text) {}

  [[nodiscard]] bool atEnd() const noexcept { return rest_.empty(); }
  bool take(char character) noexcept {
    if (!rest_.starts_with(character)) return false;
    rest_.remove_prefix(1);
    return true;
  }
  /// True when there was a blank.
  bool blanks() noexcept {
    const std::size_t count = std::min(rest_.find_first_not_of(" \t"), rest_.size());
    rest_.remove_prefix(count);
    return count > 0;
  }
  std::string_view word() noexcept {
    const auto end = std::ranges::find_if_not(rest_, [](char character) {
      const char folded = mmsbrix::foldAscii(character);
      return folded >= 'a' && folded <= 'z';
    });
    const auto length = static_cast<std::size_t>(end - rest_.begin());
    const std::string_view taken = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return taken;
  }
  std::optional<std::uint64_t> number() noexcept {
    std::uint64_t value = 0;
    const auto [stop, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
    if (error != std::errc{}) return std::nullopt;
    rest_.remove_prefix(static_cast<std::size_t>(stop - rest_.data()));
    return value;
  }
  /// Reads a number up to `limit`.
  bool number(int& value, int limit) noexcept {
    const auto read = number();
    if (!read || *read > static_cast<std::uint64_t>(limit)) return false;
    value = static_cast<int>(*read);
    return true;
  }

 private:
  std::string_view rest_;
};

bool readMonth(Scanner& in, DateFields& date) noexcept {
  const std::string_view name = in.word();
  const auto found = std::ranges::find_if(
      kMonths, [=](std::string_view month) { return equalsIgnoringCase(month, name); });
  date.month = static_cast<int>(found - kMonths.begin());
  return found != kMonths.end();
}

bool readYear(Scanner& in, DateFields& date) noexcept {
  const auto year = in.number();
  if (!year) return false;
  date.year = *year < 1900 ? *year + 1900 : *year;
  return true;
}

bool readTime(Scanner& in, DateFields& date) noexcept {
  return in.number(date.hour, 23) && in.take(':') && in.number(date.minute, 59) && in.take(':') &&
         in.number(date.second, 60);
}

// day separator month separator year blanks time
bool readDayFirst(Scanner& in, DateFields& date) noexcept {
  if (!in.number(date.day, 31)) return false;
  const bool hyphens = in.take('-');
  const auto separator = [&] { return hyphens ? in.take('-') : in.blanks(); };
  return (hyphens || in.blanks()) && readMonth(in, date) && separator() && readYear(in, date) &&
         in.blanks() && readTime(in, date);
}

// month blanks day blanks time blanks year
bool readMonthFirst(Scanner& in, DateFields& date) noexcept {
  return readMonth(in, date) && in.blanks() && in.number(date.day, 31) && in.blanks() &&
         readTime(in, date) && in.blanks() && readYear(in, date);
}

std::optional<std::uint64_t> secondsOf(const DateFields& date) noexcept {
  if (date.year < kFirstYear) return std::nullopt;
  const std::uint64_t cycles = (date.year - kFirstYear) / kYearsPerCycle;
  if (cycles > std::numeric_limits<std::uint64_t>::max() / kSecondsPerDay / kDaysPerCycle - 1) {
    return std::nullopt;
  }
  const std::chrono::year_month_day twin(
      std::chrono::year(static_cast<int>(date.year - cycles * kYearsPerCycle)),
      std::chrono::month(static_cast<unsigned>(date.month) + 1),
      std::chrono::day(static_cast<unsigned>(date.day)));
  if (!twin.ok()) return std::nullopt;
  const auto twinDays = std::chrono::sys_days(twin).time_since_epoch().count();
  const std::uint64_t days = cycles * kDaysPerCycle + static_cast<std::uint64_t>(twinDays);
  return days * kSecondsPerDay +
         static_cast<std::uint64_t>((date.hour * 60 + date.minute) * 60 + date.second);
}

template <std::size_t Count>
std::string_view nameOf(const std::array<std::string_view, Count>& names, int index) noexcept {
  if (index < 0 || static_cast<std::size_t>(index) >= Count) return "(error)";
  return names[static_cast<std::size_t>(index)].substr(0, 3);
}

}  // namespace

DateFields dateFields(std::uint64_t seconds) noexcept {
  const std::uint64_t days = seconds / kSecondsPerDay;
  const auto ofDay = static_cast<int>(seconds % kSecondsPerDay);
  const std::chrono::sys_days twinDay{std::chrono::days(static_cast<int>(days % kDaysPerCycle))};
  const std::chrono::year_month_day twin(twinDay);
  DateFields date;
  date.year = static_cast<std::uint64_t>(static_cast<int>(twin.year())) +
              days / kDaysPerCycle * kYearsPerCycle;
  date.month = static_cast<int>(static_cast<unsigned>(twin.month())) - 1;
  date.day = static_cast<int>(static_cast<unsigned>(twin.day()));
  date.weekday = static_cast<int>(std::chrono::weekday(twinDay).c_encoding());
  date.hour = ofDay / 3600;
  date.minute = ofDay / 60 % 60;
  date.second = ofDay % 60;
  return date;
}

std::string dateText(const DateFields& date) {
  std::array<char, 64> rest{};
  std::snprintf(rest.data(), rest.size(), " %llu %.2d:%.2d:%.2d GMT",
                static_cast<unsigned long long>(date.year), date.hour, date.minute, date.second);
  std::array<char, 16> day{};
  std::snprintf(day.data(), day.size(), ", %.2d ", date.day);
  std::string text(nameOf(kWeekdays, date.weekday));
  return text.append(day.data()).append(nameOf(kMonths, date.month)).append(rest.data());
}

int weekdayNumber(std::string_view name) noexcept {
  for (std::size_t i = 0; i < kWeekdays.size(); ++i) {
    if (equalsIgnoringCase(kWeekdays[i].substr(0, 3), name.substr(0, 3))) {
      return static_cast<int>(i);
    }
  }
  MMSBRIX_REPORT_ASSERTION(kHeaderCodingSource, "Date-value: unknown weekday");
  return -1;
}

std::optional<std::uint64_t> parseDate(std::string_view text) noexcept {
  Scanner in(text);
  DateFields date;
  in.blanks();
  date.weekday = weekdayNumber(in.word());
  if (date.weekday < 0) return std::nullopt;
  const bool comma = in.take(',');
  const bool blanks = in.blanks();
  if (!comma && !blanks) return std::nullopt;
  Scanner dayFirst = in;
  if (readDayFirst(dayFirst, date)) {
    in = dayFirst;
  } else if (!readMonthFirst(in, date)) {
    return std::nullopt;
  }
  in.blanks();
  const std::string_view zone = in.word();
  in.blanks();
  const bool utc =
      zone.empty() || equalsIgnoringCase(zone, "GMT") || equalsIgnoringCase(zone, "UTC");
  if (!utc || !in.atEnd()) return std::nullopt;
  return secondsOf(date);
}

}  // namespace WapStack
