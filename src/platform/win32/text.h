// Texts of the system: UTF-16, and octets in the process's ANSI code page.
#ifndef MMSBRIX_PLATFORM_WIN32_TEXT_H
#define MMSBRIX_PLATFORM_WIN32_TEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace mmsbrix::platform {

/// True for code pages that shift between sets: for them the system takes no flags and tells of no
/// replaced character.
[[nodiscard]] bool isShifting(unsigned codePage) noexcept;
/// Octets in a code page as UTF-16; nothing when they are not valid in it.
[[nodiscard]] std::optional<std::wstring> wideFrom(std::string_view octets, unsigned codePage);
/// UTF-8 as UTF-16; what is not well-formed becomes replacement characters.
[[nodiscard]] std::wstring wideFromUtf8(std::string_view utf8);
/// UTF-16 as UTF-8; lone surrogates become replacement characters.
[[nodiscard]] std::string utf8FromWide(std::wstring_view wide);
/// UTF-8 as ANSI, with the nearest characters that the code page has.
[[nodiscard]] std::string ansiFromUtf8(std::string_view utf8);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_WIN32_TEXT_H
