// Times as people write them: instants and intervals.
#ifndef MMSBRIX_TOOLS_WHEN_H
#define MMSBRIX_TOOLS_WHEN_H

#include <mmsbrix/platform/systemtime.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace mmsbrix::tool {

/// Seconds of "2d", "36h", "1w2d", "90min" or "45s"; nothing when it is no interval.
[[nodiscard]] std::optional<std::uint64_t> parseInterval(std::string_view text);
/// Seconds since 1970 of "2026-11-24", "2026-11-24T10:00", "2026-11-24 10:00:30" (local), with "Z"
/// or
/// "+02:00" behind it (then not local), or "@1795515005"; nothing when it is none.
[[nodiscard]] std::optional<std::uint64_t> parseInstant(std::string_view text);
/// The record of either; nothing when it is neither or cannot be held.
[[nodiscard]] std::optional<SYSTEMTIME> parseWhen(std::string_view text);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_WHEN_H
