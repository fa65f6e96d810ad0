// Seam: seconds since 1970-01-01 00:00:00 UTC to local calendar time and back, 64 bits wide.
#ifndef MMSBRIX_PLATFORM_LOCAL_TIME_H
#define MMSBRIX_PLATFORM_LOCAL_TIME_H

#include <cstdint>
#include <optional>

#include "platform/systemtime.h"

namespace mmsbrix::platform {

/// Local year, month, day, hour, minute and second of an instant; day of week and milliseconds stay
/// 0.  Nothing for an instant whose year a record cannot hold.
[[nodiscard]] std::optional<SYSTEMTIME> toLocalTime(std::uint64_t secondsSince1970) noexcept;
/// The instant of a local time; fields beyond their range carry over.  Negative before 1970, and -1
/// for a time that cannot be converted.
[[nodiscard]] std::int64_t fromLocalTime(const SYSTEMTIME& local) noexcept;

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_LOCAL_TIME_H
