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

// Whether programs find the instances of the library's templates in it.  On Windows those that are
// all in headers are made anew by each program.
#if defined(_WIN32) && !defined(MMSBRIX_BUILDING)
#define MMSBRIX_EXTERN_TEMPLATES 0
#else
#define MMSBRIX_EXTERN_TEMPLATES 1
#endif

#endif  // MMSBRIX_EXPORT_H
