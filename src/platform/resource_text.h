// Seam: texts that a platform keeps in the library's resources, where they can be translated.
#ifndef MMSBRIX_PLATFORM_RESOURCE_TEXT_H
#define MMSBRIX_PLATFORM_RESOURCE_TEXT_H

#include <span>
#include <string_view>

namespace mmsbrix::platform {

/// "Failed to connect to the gateway", and what to do about it.
inline constexpr unsigned kTextNoGateway = 214;

/// The resource text of a number, in `room`, with what does not fit cut off; `otherwise` where
/// there is none.
[[nodiscard]] std::string_view resourceText(unsigned number, std::span<char> room,
                                            std::string_view otherwise) noexcept;

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_RESOURCE_TEXT_H
