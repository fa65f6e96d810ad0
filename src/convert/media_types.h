/// @file
/// Media types of files by their names, and extensions by media type: the everyday types as phones
/// expect them, the platform's media-type database for all others.
#ifndef MMSBRIX_CONVERT_MEDIA_TYPES_H
#define MMSBRIX_CONVERT_MEDIA_TYPES_H

#include <string>
#include <string_view>

#include "../export.h"

namespace mmsbrix {

/// The media type that a file's name tells, such as "image/jpeg"; "" when nothing is known of it.
MMSBRIX_API std::string mediaTypeOfFile(std::string_view path);

/// The extension for files of a media type, such as ".jpg", letters in any case and without
/// parameters; "" when nothing is known of it.
MMSBRIX_API std::string extensionOfMediaType(std::string_view mediaType);

}  // namespace mmsbrix

#endif  // MMSBRIX_CONVERT_MEDIA_TYPES_H
