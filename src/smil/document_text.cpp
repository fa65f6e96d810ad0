#include "smil/document_text.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/ascii.h"
#include "platform/charset.h"
#include "platform/unicode.h"

namespace mmsbrix {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

struct Utf16Form {
  std::string_view beginning;
  std::string_view encoding;
  bool isMark;
};
constexpr auto kUtf16Forms = std::to_array<Utf16Form>({
    {"\xFF\xFE", "utf-16le", true},
    {"\xFE\xFF", "utf-16be", true},
    {{"<\0", 2}, "utf-16le", false},
    {{"\0<", 2}, "utf-16be", false},
});

// Encodings whose octets are taken as they stand.  UTF-16 among them: a declaration that reads as
// ASCII cannot mean it.
constexpr auto kOctetForOctet = std::to_array<std::string_view>(
    {"", "utf-8", "utf8", "utf-16", "utf-16le", "utf-16be", "ucs-2", "iso-10646-ucs-2"});
// Encodings that Windows-1252 reads as well.  Latin-1's own meaning of the octets 0x80 to 0x9F is
// used by nobody.
constexpr auto kLikeWindows1252 = std::to_array<std::string_view>(
    {"windows-1252", "cp1252", "iso-8859-1", "latin1", "latin-1", "us-ascii", "ascii"});

bool isAmong(std::span<const std::string_view> names, std::string_view name) noexcept {
  return std::any_of(names.begin(), names.end(),
                     [name](std::string_view known) { return equalsIgnoringCase(known, name); });
}

bool isEncodingName(std::string_view name) noexcept {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return (foldAscii(c) >= 'a' && foldAscii(c) <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.' || c == ':';
  });
}

// The encoding that an XML declaration names; empty without one.
std::string_view declaredEncoding(std::string_view text) noexcept {
  if (!text.starts_with("<?xml")) return {};
  const std::string_view declaration = text.substr(0, text.find("?>"));
  std::size_t at = declaration.find("encoding");
  if (at == std::string_view::npos) return {};
  at = declaration.find_first_of("\"'", at);
  if (at == std::string_view::npos) return {};
  const std::size_t end = declaration.find(declaration[at], at + 1);
  if (end == std::string_view::npos) return {};
  return declaration.substr(at + 1, end - at - 1);
}

}  // namespace

std::optional<std::string> textOfFile(std::string_view octets, std::string& reason) {
  if (octets.starts_with(kUtf8Mark)) return std::string(octets.substr(kUtf8Mark.size()));
  std::string_view encoding;
  for (const Utf16Form& form : kUtf16Forms) {
    if (!encoding.empty() || !octets.starts_with(form.beginning)) continue;
    encoding = form.encoding;
    if (form.isMark) octets.remove_prefix(form.beginning.size());
  }
  if (encoding.empty()) {
    encoding = declaredEncoding(octets);
    if (isAmong(kOctetForOctet, encoding)) return std::string(octets);
    if (isAmong(kLikeWindows1252, encoding)) return textOfMemory(octets);
  }
  std::optional<std::string> text;
  if (isEncodingName(encoding)) text = platform::convertCharset(octets, encoding, "utf-8");
  if (!text) {
    reason = "The octets are not valid in the encoding '" + std::string(encoding) +
             "', or it is not known";
  }
  return text;
}

std::string textOfMemory(std::string_view octets) {
  if (octets.starts_with(kUtf8Mark)) octets.remove_prefix(kUtf8Mark.size());
  return platform::isUtf8(octets) ? std::string(octets) : platform::utf8FromWindows1252(octets);
}

}  // namespace mmsbrix
