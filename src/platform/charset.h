// Seam: texts between character sets, by their MIME names.
#ifndef MMSBRIX_PLATFORM_CHARSET_H
#define MMSBRIX_PLATFORM_CHARSET_H

#include <optional>
#include <string>
#include <string_view>

namespace mmsbrix::platform {

/// Converts octets from one charset to another; nothing when a charset is unknown to the platform,
/// the octets are not valid in `from`, or a character has no place in `to`.
[[nodiscard]] std::optional<std::string> convertCharset(std::string_view octets,
                                                        std::string_view from, std::string_view to);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_CHARSET_H
