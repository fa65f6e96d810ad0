// Date texts of HTTP headers and the seconds that they stand for.  All dates are UTC and 64 bits
// wide; the local time zone and the platform's calendar functions play no part.
// [RFC 1123 5.2.14, RFC 2616 3.3.1]
#ifndef MMSBRIX_WSP_WSP_DATE_H
#define MMSBRIX_WSP_WSP_DATE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace WapStack {

/// A moment taken apart.
struct DateFields {
  std::uint64_t year = 1970;
  int month = 0;    ///< 0 is January
  int day = 1;      ///< of the month, from 1
  int weekday = 0;  ///< 0 is Sunday
  int hour = 0;
  int minute = 0;
  int second = 0;  ///< up to 60, a leap second
};

/// The UTC date `seconds` after 1970-01-01 00:00:00.
[[nodiscard]] DateFields dateFields(std::uint64_t seconds) noexcept;
/// The date in the form of RFC 1123, "Sun, 06 Nov 1994 08:49:37 GMT".  A weekday or month out of
/// its range prints as "(error)".
[[nodiscard]] std::string dateText(const DateFields& date);

/// The number, 0 to 6, of the weekday with the same first three letters in any case; -1, with a
/// report of a failed assertion, when there is none.
[[nodiscard]] int weekdayNumber(std::string_view name) noexcept;

/// The seconds of a date in one of three layouts, each with an optional zone of "GMT" or "UTC":
///
///     Sun, 06 Nov 1994 08:49:37 GMT     (RFC 1123)
///     Sunday, 06-Nov-94 08:49:37 GMT    (RFC 850)
///     Sun Nov  6 08:49:37 1994          (asctime)
///
/// A year below 1900 counts from 1900, so that one of two digits is in the twentieth century.
/// The weekday need not be the date's own.  Nothing for another layout, a field out of its range
/// or a date before 1970.
[[nodiscard]] std::optional<std::uint64_t> parseDate(std::string_view text) noexcept;

}  // namespace WapStack

#endif  // MMSBRIX_WSP_WSP_DATE_H
