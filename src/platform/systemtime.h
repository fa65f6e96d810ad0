// SYSTEMTIME, the date record of the message model: eight 16-bit fields, all zero meaning unset.
// Windows brings the type itself; elsewhere it is defined here with the same fields.
#ifndef MMSBRIX_PLATFORM_SYSTEMTIME_H
#define MMSBRIX_PLATFORM_SYSTEMTIME_H

#ifdef _WIN32
#include <windows.h>
#else
#include <cstdint>

/// A calendar time in whole milliseconds.  Months count from 1, days of the week from 0 (Sunday).
struct SYSTEMTIME {
  std::uint16_t wYear;
  std::uint16_t wMonth;
  std::uint16_t wDayOfWeek;
  std::uint16_t wDay;
  std::uint16_t wHour;
  std::uint16_t wMinute;
  std::uint16_t wSecond;
  std::uint16_t wMilliseconds;
};
#endif

#endif  // MMSBRIX_PLATFORM_SYSTEMTIME_H
