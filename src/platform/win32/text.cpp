#include "platform/win32/text.h"

#include <windows.h>

#include <limits>

namespace mmsbrix::platform {
namespace {

// Lengths of the system's functions are ints.
bool isTooLong(std::size_t length) noexcept {
  return length > static_cast<std::size_t>(std::numeric_limits<int>::max()) / 4;
}

std::optional<std::wstring> widened(std::string_view octets, unsigned codePage, DWORD flags) {
  if (octets.empty()) return std::wstring();
  if (isTooLong(octets.size())) return std::nullopt;
  const int length = static_cast<int>(octets.size());
  const int units = ::MultiByteToWideChar(codePage, flags, octets.data(), length, nullptr, 0);
  if (units <= 0) return std::nullopt;
  std::wstring wide(static_cast<std::size_t>(units), L'\0');
  if (::MultiByteToWideChar(codePage, flags, octets.data(), length, wide.data(), units) != units) {
    return std::nullopt;
  }
  return wide;
}

std::string narrowed(std::wstring_view wide, unsigned codePage) {
  if (wide.empty() || isTooLong(wide.size())) return {};
  const int length = static_cast<int>(wide.size());
  const int octets =
      ::WideCharToMultiByte(codePage, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(octets), '\0');
  ::WideCharToMultiByte(codePage, 0, wide.data(), length, text.data(), octets, nullptr, nullptr);
  return text;
}

}  // namespace

bool isShifting(unsigned codePage) noexcept {
  constexpr unsigned kHz = 52936;
  return codePage == CP_UTF7 || codePage == kHz || (codePage >= 50220 && codePage <= 50229);
}

std::optional<std::wstring> wideFrom(std::string_view octets, unsigned codePage) {
  return widened(octets, codePage, isShifting(codePage) ? 0 : MB_ERR_INVALID_CHARS);
}

std::wstring wideFromUtf8(std::string_view utf8) {
  return widened(utf8, CP_UTF8, 0).value_or(std::wstring());
}

std::string utf8FromWide(std::wstring_view wide) {
  return narrowed(wide, CP_UTF8);
}

std::string ansiFromUtf8(std::string_view utf8) {
  return narrowed(wideFromUtf8(utf8), CP_ACP);
}

}  // namespace mmsbrix::platform
