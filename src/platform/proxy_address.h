// Proxies as operators and users write them.
#ifndef MMSBRIX_PLATFORM_PROXY_ADDRESS_H
#define MMSBRIX_PLATFORM_PROXY_ADDRESS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace mmsbrix::platform {

struct ProxyAddress {
  std::string host;        ///< without brackets
  std::uint16_t port = 0;  ///< 80 where the text has none, or 0
};
/// Takes "host:port" apart; an IPv6 address may stand without brackets.  Nothing for what is no
/// name of a host, such as a URL or one with credentials.
[[nodiscard]] std::optional<ProxyAddress> parseProxy(std::string_view proxy);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_PROXY_ADDRESS_H
