#include "platform/proxy_address.h"

#include <algorithm>
#include <charconv>

namespace mmsbrix::platform {
namespace {

constexpr std::uint16_t kHttpPort = 80;

constexpr bool isControl(char c) noexcept {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}
constexpr bool isDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}

// Tolerance: operators publish proxies such as 192.168.094.023 and mean decimal numbers, where the
// resolver would read octal ones.  Nothing when `host` is no dotted quad.
std::optional<std::string> decimalQuad(std::string_view host) {
  std::string plain;
  for (int group = 0; group < 4; ++group) {
    if (group > 0) {
      if (host.empty() || host.front() != '.') return std::nullopt;
      host.remove_prefix(1);
      plain += '.';
    }
    unsigned number = 0;
    const auto [end, error] = std::from_chars(host.data(), host.data() + host.size(), number);
    if (error != std::errc{} || number > 255) return std::nullopt;
    host.remove_prefix(static_cast<std::size_t>(end - host.data()));
    plain += std::to_string(number);
  }
  if (!host.empty()) return std::nullopt;
  return plain;
}

}  // namespace

std::optional<ProxyAddress> parseProxy(std::string_view proxy) {
  std::string_view host = proxy;
  std::string_view digits;
  const std::size_t colon = proxy.rfind(':');
  if (colon != std::string_view::npos &&
      std::all_of(proxy.begin() + static_cast<std::ptrdiff_t>(colon) + 1, proxy.end(), isDigit)) {
    host = proxy.substr(0, colon);
    digits = proxy.substr(colon + 1);
  }
  if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
  // What would turn the host into something else, such as credentials or a path, makes it no name.
  if (host.empty() || host.find_first_of("/@?#\\ []") != std::string_view::npos ||
      std::any_of(host.begin(), host.end(), isControl)) {
    return std::nullopt;
  }
  std::uint16_t port = 0;
  if (!digits.empty() &&
      std::from_chars(digits.data(), digits.data() + digits.size(), port).ec != std::errc{}) {
    return std::nullopt;
  }
  return ProxyAddress{decimalQuad(host).value_or(std::string(host)), port == 0 ? kHttpPort : port};
}

}  // namespace mmsbrix::platform
