// By the system's code pages.  UTF-16 has none; its octets are turned here.
#include "platform/charset.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/ascii.h"
#include "platform/win32/text.h"

namespace mmsbrix::platform {
namespace {

constexpr unsigned kUtf16le = 1200;
constexpr unsigned kUtf16be = 1201;
/// UTF-16 that begins with a mark; without one, low octet first.
constexpr unsigned kUtf16Marked = 0x10000 + kUtf16le;
constexpr unsigned kAscii = 20127;

struct CodePage {
  std::string_view name;
  unsigned number;
};
// MIME names that are not formed of the number, such as windows-1252 and iso-8859-1 are.
constexpr auto kCodePages = std::to_array<CodePage>({
    {"us-ascii", kAscii},
    {"ascii", kAscii},
    {"utf-8", CP_UTF8},
    {"utf8", CP_UTF8},
    {"utf-7", CP_UTF7},
    {"utf-16", kUtf16Marked},
    {"utf-16le", kUtf16le},
    {"utf-16be", kUtf16be},
    {"iso-10646-ucs-2", kUtf16be},
    {"ucs-2", kUtf16be},
    {"ucs-2be", kUtf16be},
    {"ucs-2le", kUtf16le},
    {"latin1", 28591},
    {"big5", 950},
    {"big5-hkscs", 951},
    {"gb2312", 936},
    {"gbk", 936},
    {"gb18030", 54936},
    {"hz-gb-2312", 52936},
    {"shift_jis", 932},
    {"shift-jis", 932},
    {"sjis", 932},
    {"euc-jp", 20932},
    {"iso-2022-jp", 50220},
    {"euc-kr", 51949},
    {"ks_c_5601-1987", 949},
    {"iso-2022-kr", 50225},
    {"koi8-r", 20866},
    {"koi8-u", 21866},
    {"tis-620", 874},
    {"macintosh", 10000},
});

constexpr unsigned kNoCodePage = 0;

std::optional<unsigned> numberBehind(std::string_view name, std::string_view prefix) {
  if (!startsWithIgnoringCase(name, prefix)) return std::nullopt;
  name.remove_prefix(prefix.size());
  unsigned number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  if (error != std::errc{} || end != name.data() + name.size()) return std::nullopt;
  return number;
}

unsigned codePageOf(std::string_view name) {
  for (const CodePage& row : kCodePages) {
    if (equalsIgnoringCase(row.name, name)) return row.number;
  }
  if (const auto part = numberBehind(name, "iso-8859-"); part && *part >= 1 && *part <= 16) {
    return 28590 + *part;
  }
  for (const std::string_view prefix : {"windows-", "cp", "ibm"}) {
    if (const auto number = numberBehind(name, prefix)) {
      return ::IsValidCodePage(*number) != 0 ? *number : kNoCodePage;
    }
  }
  return kNoCodePage;
}

bool isLowSurrogate(wchar_t unit) noexcept {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}
bool isHighSurrogate(wchar_t unit) noexcept {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

// A surrogate has its fellow.
bool isWellFormed(std::wstring_view wide) noexcept {
  for (std::size_t i = 0; i < wide.size(); ++i) {
    if (isLowSurrogate(wide[i])) return false;
    if (!isHighSurrogate(wide[i])) continue;
    if (++i == wide.size() || !isLowSurrogate(wide[i])) return false;
  }
  return true;
}

std::optional<std::wstring> fromUtf16(std::string_view octets, unsigned form) {
  bool highFirst = form == kUtf16be;
  if (form == kUtf16Marked && octets.starts_with("\xFE\xFF")) highFirst = true;
  if (form == kUtf16Marked && (highFirst || octets.starts_with("\xFF\xFE"))) {
    octets.remove_prefix(2);
  }
  if (octets.size() % 2 != 0) return std::nullopt;
  std::wstring wide;
  wide.reserve(octets.size() / 2);
  for (std::size_t i = 0; i < octets.size(); i += 2) {
    const auto first = static_cast<unsigned char>(octets[i]);
    const auto second = static_cast<unsigned char>(octets[i + 1]);
    wide += static_cast<wchar_t>(highFirst ? first << 8 | second : second << 8 | first);
  }
  if (!isWellFormed(wide)) return std::nullopt;
  return wide;
}

std::string toUtf16(std::wstring_view wide, unsigned form) {
  std::string octets;
  octets.reserve(wide.size() * 2 + 2);
  if (form == kUtf16Marked) octets = "\xFF\xFE";
  for (const wchar_t unit : wide) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    octets += form == kUtf16be ? high : low;
    octets += form == kUtf16be ? low : high;
  }
  return octets;
}

std::optional<std::wstring> decoded(std::string_view octets, unsigned codePage) {
  switch (codePage) {
    case kUtf16le:
    case kUtf16be:
    case kUtf16Marked:
      return fromUtf16(octets, codePage);
    case kAscii:  // the system passes over the eighth bit
      if (std::any_of(octets.begin(), octets.end(), [](char c) { return (c & 0x80) != 0; })) {
        return std::nullopt;
      }
      break;
    default:
      break;
  }
  return wideFrom(octets, codePage);
}

std::optional<std::string> encoded(const std::wstring& wide, unsigned codePage) {
  if (codePage == kUtf16le || codePage == kUtf16be || codePage == kUtf16Marked) {
    return toUtf16(wide, codePage);
  }
  if (wide.empty()) return std::string();
  const bool shifting = isShifting(codePage);
  const bool unicode = codePage == CP_UTF8 || codePage == 54936;
  const DWORD flags = shifting ? 0 : unicode ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
  BOOL replaced = FALSE;
  BOOL* const replacedOrNone = shifting || unicode ? nullptr : &replaced;
  const int units = static_cast<int>(wide.size());
  const int octets = ::WideCharToMultiByte(codePage, flags, wide.data(), units, nullptr, 0, nullptr,
                                           replacedOrNone);
  if (octets <= 0 || replaced != FALSE) return std::nullopt;
  std::string text(static_cast<std::size_t>(octets), '\0');
  if (::WideCharToMultiByte(codePage, flags, wide.data(), units, text.data(), octets, nullptr,
                            replacedOrNone) != octets ||
      replaced != FALSE) {
    return std::nullopt;
  }
  // A character without a place shows when the octets are read back.
  if (shifting && wideFrom(text, codePage) != wide) return std::nullopt;
  return text;
}

}  // namespace

std::optional<std::string> convertCharset(std::string_view octets, std::string_view from,
                                          std::string_view to) {
  const unsigned source = codePageOf(from);
  const unsigned target = codePageOf(to);
  if (source == kNoCodePage || target == kNoCodePage) return std::nullopt;
  const std::optional<std::wstring> wide = decoded(octets, source);
  return wide ? encoded(*wide, target) : std::nullopt;
}

}  // namespace mmsbrix::platform
