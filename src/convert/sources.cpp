#include "convert/sources.h"

#include <algorithm>

#include "platform/ascii.h"
#include "platform/files.h"

namespace mmsbrix {
namespace {

constexpr std::string_view kCid = "cid:";

}  // namespace

bool isCidUrl(std::string_view source) noexcept {
  return startsWithIgnoringCase(source, kCid);
}

std::string_view withoutCid(std::string_view source) noexcept {
  return isCidUrl(source) ? source.substr(kCid.size()) : source;
}

bool hasScheme(std::string_view source) noexcept {
  const std::size_t colon = source.find(':');
  if (colon == std::string_view::npos || colon < 2) return false;
  return std::all_of(source.begin(), source.begin() + static_cast<std::ptrdiff_t>(colon),
                     [](char c) {
                       const char folded = foldAscii(c);
                       return (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9') ||
                              c == '+' || c == '-' || c == '.';
                     });
}

int hexDigit(char c) noexcept {
  const char folded = foldAscii(c);
  if (c >= '0' && c <= '9') return c - '0';
  return folded >= 'a' && folded <= 'f' ? folded - 'a' + 10 : -1;
}

std::string percentDecoded(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = text[i] == '%' && i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
    const int low = high < 0 ? -1 : hexDigit(text[i + 2]);
    if (low < 0) {
      decoded += text[i];
    } else {
      decoded += static_cast<char>(high * 16 + low);
      i += 2;
    }
  }
  return decoded;
}

std::string pathOfFileUrl(std::string_view source) {
  if (!startsWithIgnoringCase(source, "file:")) return {};
  source.remove_prefix(5);
  if (source.starts_with("//")) {
    const std::size_t slash = std::min(source.find('/', 2), source.size());
    const std::string_view host = source.substr(2, slash - 2);
    if (!host.empty() && !equalsIgnoringCase(host, "localhost")) return {};
    source.remove_prefix(slash);
  }
  return platform::pathFromUrlPath(percentDecoded(source));
}

}  // namespace mmsbrix
