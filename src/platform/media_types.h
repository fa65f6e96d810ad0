// Seam: the platform's media-type database.
#ifndef MMSBRIX_PLATFORM_MEDIA_TYPES_H
#define MMSBRIX_PLATFORM_MEDIA_TYPES_H

#include <string>
#include <string_view>

namespace mmsbrix::platform {

/// The media type registered for an extension (point included, letters in any case); "" for none,
/// and on a machine without a database.
[[nodiscard]] std::string mediaTypeOfExtension(std::string_view extension);

/// The first extension registered for a media type (letters in any case), with its point; ""
/// likewise.
[[nodiscard]] std::string extensionOfMediaType(std::string_view mediaType);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_MEDIA_TYPES_H
