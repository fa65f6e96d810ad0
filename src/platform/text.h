// What the value classes share about texts handed in by callers.
#ifndef MMSBRIX_PLATFORM_TEXT_H
#define MMSBRIX_PLATFORM_TEXT_H

#include <string_view>

namespace mmsbrix {

/// A null text stands for the empty one.
[[nodiscard]] constexpr const char* orEmpty(const char* text) noexcept {
  return text == nullptr ? "" : text;
}
/// The model's texts are zero-terminated: what follows the first zero is no part of them.
[[nodiscard]] constexpr std::string_view upToZero(std::string_view text) noexcept {
  return text.substr(0, text.find('\0'));
}

}  // namespace mmsbrix

#endif  // MMSBRIX_PLATFORM_TEXT_H
