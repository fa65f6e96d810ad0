// UTF-8 octet by octet, and the two conversions that must not fail whatever the octets are.  The
// same on every platform; all other charsets go through platform/charset.h.
#ifndef MMSBRIX_PLATFORM_UNICODE_H
#define MMSBRIX_PLATFORM_UNICODE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace mmsbrix::platform {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// Octets of the well-formed sequence that a text begins with; 0 without one.  [RFC 3629]
[[nodiscard]] std::size_t utf8SequenceLength(std::string_view text) noexcept;
/// The character of one well-formed sequence.
[[nodiscard]] char32_t utf8Character(std::string_view sequence) noexcept;
/// Takes the character that a text, not empty, begins with off its front; an octet that begins no
/// well-formed sequence is taken alone and stands for the replacement character.
[[nodiscard]] char32_t takeUtf8Character(std::string_view& text) noexcept;
/// True for well-formed UTF-8: no overlong forms, no surrogates.
[[nodiscard]] bool isUtf8(std::string_view octets) noexcept;
void appendUtf8(std::string& out, char32_t character);

/// Every octet is a character of Windows-1252; the five that it leaves open are control characters.
[[nodiscard]] std::string utf8FromWindows1252(std::string_view octets);
/// UTF-8 as UTF-16, low octet first, without a mark; what is not well-formed becomes replacement
/// characters, one for each octet.
[[nodiscard]] std::string utf16leFromUtf8(std::string_view octets);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_UNICODE_H
