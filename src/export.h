/// @file
/// The export macro: marks what leaves the library.  Everything else is hidden.
#ifndef MMSBRIX_EXPORT_H
#define MMSBRIX_EXPORT_H

#if defined(MMSBRIX_STATIC)
#define MMSBRIX_API
#elif defined(_WIN32)
#if defined(MMSBRIX_BUILDING)
#define MMSBRIX_API __declspec(dllexport)
#else
#define MMSBRIX_API __declspec(dllimport)
#endif
#else
#define MMSBRIX_API __attribute__((visibility("default")))
#endif

#endif  // MMSBRIX_EXPORT_H
