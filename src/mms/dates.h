/// @file
/// Date records for messages: instants and intervals from seconds.
#ifndef MMSBRIX_MMS_DATES_H
#define MMSBRIX_MMS_DATES_H

#include <cstdint>
#include <optional>

#include "../export.h"
#include "../platform/systemtime.h"

namespace mmsbrix {

/// The record of an instant, in the machine's local time as the message classes have it; nothing
/// before 2001, where a record would mean an interval, or past what one can hold.
MMSBRIX_API std::optional<SYSTEMTIME> instantRecord(std::uint64_t secondsSince1970);
/// The record of an interval, days counted in its day field; nothing for 0, which would mean unset,
/// or for more than 65535 days.
MMSBRIX_API std::optional<SYSTEMTIME> intervalRecord(std::uint64_t seconds);
/// The instant of a calendar time, local unless `utc`; fields beyond their range carry over.
MMSBRIX_API std::int64_t instantOf(const SYSTEMTIME& record, bool utc);

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_DATES_H
