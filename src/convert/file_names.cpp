#include "convert/file_names.h"

#include <algorithm>
#include <array>

#include "convert/part_lookup.h"
#include "platform/ascii.h"
#include "platform/unicode.h"

namespace mmsbrix {
namespace {

// Control characters, and those that are not seen but change how a name looks.
bool isInvisible(char32_t c) noexcept {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0xAD || c == 0x61C ||
         (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
         (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || c == platform::kReplacementCharacter;
}

bool isReserved(char32_t c) noexcept {
  return c < 0x80 &&
         std::string_view("\"*:<>?|/\\").find(static_cast<char>(c)) != std::string_view::npos;
}

// Names that mean a device whatever their extension: the numbered ones with a digit, also a raised
// one.
bool isDevice(std::string_view name) noexcept {
  std::string_view stem = name.substr(0, name.find('.'));
  while (stem.ends_with(' ')) stem.remove_suffix(1);
  for (const std::string_view device :
       {"con", "prn", "aux", "nul", "conin$", "conout$", "clock$"}) {
    if (equalsIgnoringCase(stem, device)) return true;
  }
  if (!startsWithIgnoringCase(stem, "com") && !startsWithIgnoringCase(stem, "lpt")) return false;
  stem.remove_prefix(3);
  return (stem.size() == 1 && stem[0] >= '0' && stem[0] <= '9') || stem == "\xC2\xB9" ||
         stem == "\xC2\xB2" || stem == "\xC2\xB3";
}

std::string_view trimmedEnds(std::string_view name) noexcept {
  const std::size_t begin = name.find_first_not_of(". ");
  if (begin == std::string_view::npos) return {};
  return name.substr(begin, name.find_last_not_of(". ") - begin + 1);
}

}  // namespace

std::string boundedFileName(std::string_view name) {
  constexpr std::size_t kMaxExtensionOctets = 16;
  if (name.size() <= kMaxFileNameOctets) return std::string(name);
  const std::size_t dot = std::min(name.rfind('.'), name.size());
  const std::string_view extension =
      name.size() - dot <= kMaxExtensionOctets ? name.substr(dot) : std::string_view();
  std::size_t length = kMaxFileNameOctets - extension.size();
  while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80) --length;
  return std::string(name.substr(0, length)).append(extension);
}

std::string harmlessFileName(std::string_view proposed) {
  const std::string utf8 =
      platform::isUtf8(proposed) ? std::string(proposed) : platform::utf8FromWindows1252(proposed);
  std::string name;
  for (std::string_view rest = lastPathPart(utf8); !rest.empty();) {
    const char32_t c = platform::takeUtf8Character(rest);
    platform::appendUtf8(name, isInvisible(c) || isReserved(c) ? U'_' : c);
  }
  name = trimmedEnds(boundedFileName(trimmedEnds(name)));
  if (name.starts_with('-')) name[0] = '_';
  if (isDevice(name)) name.insert(0, "_");
  return name;
}

}  // namespace mmsbrix
