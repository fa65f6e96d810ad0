// RECT, the rectangle record of the presentation model.  Windows brings the type itself; elsewhere
// it is defined here with the same fields.
#ifndef MMSBRIX_PLATFORM_RECT_H
#define MMSBRIX_PLATFORM_RECT_H

#ifdef _WIN32
#include <windows.h>
#else
#include <cstdint>

/// Edges in pixels.
struct RECT {
  std::int32_t left;
  std::int32_t top;
  std::int32_t right;
  std::int32_t bottom;
};
#endif

#endif  // MMSBRIX_PLATFORM_RECT_H
