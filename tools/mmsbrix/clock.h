// Clock values of SMIL as peers write them.  [W3C SMIL 2.0 Timing, clock values]
#ifndef MMSBRIX_TOOLS_CLOCK_H
#define MMSBRIX_TOOLS_CLOCK_H

#include <optional>
#include <string_view>

namespace mmsbrix::tool {

/// Milliseconds of "5s", "5000ms", "5", "1.5s", "2min", "0:05" or "00:00:05"; nothing for
/// "indefinite" and whatever is no time, or longer than a day.
[[nodiscard]] std::optional<int> parseClock(std::string_view text);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_CLOCK_H
