#include "clock.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>

namespace mmsbrix::tool {
namespace {

constexpr double kDay = 86400000.0;

// Takes a decimal number without sign or exponent off the front.
bool takeNumber(std::string_view& text, double& number) {
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  if (error != std::errc() || text.front() == '-' || !(number <= kDay)) return false;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return true;
}

}  // namespace

std::optional<int> parseClock(std::string_view text) {
  struct Unit {
    std::string_view name;
    double milliseconds;
  };
  constexpr auto kUnits =
      std::to_array<Unit>({{"", 1000}, {"s", 1000}, {"ms", 1}, {"min", 60000}, {"h", 3600000}});
  const std::size_t begin = text.find_first_not_of(" \t\r\n");
  if (begin == std::string_view::npos) return std::nullopt;
  text = text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
  double number = 0;
  if (!takeNumber(text, number)) return std::nullopt;
  double milliseconds = -1;
  if (text.starts_with(':')) {
    // [hours:]minutes:seconds
    double seconds = number;
    while (text.starts_with(':')) {
      text.remove_prefix(1);
      if (text.empty() || !takeNumber(text, number)) return std::nullopt;
      seconds = seconds * 60 + number;
    }
    if (text.empty()) milliseconds = seconds * 1000;
  } else {
    for (const Unit& unit : kUnits) {
      if (text == unit.name) milliseconds = number * unit.milliseconds;
    }
  }
  if (milliseconds < 0 || milliseconds > kDay) return std::nullopt;
  return static_cast<int>(std::lround(milliseconds));
}

}  // namespace mmsbrix::tool
