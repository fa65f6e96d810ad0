/// @file
/// The version of the library that is loaded.
#ifndef MMSBRIX_VERSION_H
#define MMSBRIX_VERSION_H

#include "export.h"

namespace mmsbrix {

/// "major.minor.patch"; static.
MMSBRIX_API const char* version() noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_VERSION_H
