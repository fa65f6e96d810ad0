/// @file
/// Names of files that come from messages, made harmless.
#ifndef MMSBRIX_CONVERT_FILE_NAMES_H
#define MMSBRIX_CONVERT_FILE_NAMES_H

#include <cstddef>
#include <string>
#include <string_view>

#include "../export.h"

namespace mmsbrix {

/// Octets of a file name, extension included.
inline constexpr std::size_t kMaxFileNameOctets = 100;

/// A name shortened to `kMaxFileNameOctets`, between characters; an extension stays.
std::string boundedFileName(std::string_view name);

/// What a message proposes as a file's name, as a name that is harmless in any folder on any
/// platform: the last part of a path, without control and direction-changing characters, characters
/// that platforms reserve, device names, and points or hyphens in front; UTF-8 of bounded length.
/// "" when nothing is left.
MMSBRIX_API std::string harmlessFileName(std::string_view proposed);

}  // namespace mmsbrix

#endif  // MMSBRIX_CONVERT_FILE_NAMES_H
