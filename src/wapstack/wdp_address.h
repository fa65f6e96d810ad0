// The address of a WDP peer on a bearer that routes IP: an IP address and a UDP port.
#ifndef MMSBRIX_WAPSTACK_WDP_ADDRESS_H
#define MMSBRIX_WAPSTACK_WDP_ADDRESS_H

#include <array>
#include <compare>
#include <cstdint>
#include <string>

namespace mmsbrix {

/// An IPv4 or IPv6 address in network order with its port; compares as a value.
struct WdpAddress {
  std::array<std::uint8_t, 16> octets{};  ///< the first `size` are the address, the rest stay zero
  std::uint8_t size = 4;                  ///< 4 or 16
  std::uint16_t port = 0;
  std::uint32_t scope = 0;  ///< the interface of a link-local IPv6 address, else 0

  auto operator<=>(const WdpAddress&) const = default;
};

/// "10.1.2.3:9201", "[::1]:9201".
[[nodiscard]] std::string toString(const WdpAddress& address);
/// The address alone, "10.1.2.3" or "::1".
[[nodiscard]] std::string hostText(const WdpAddress& address);

}  // namespace mmsbrix

#endif  // MMSBRIX_WAPSTACK_WDP_ADDRESS_H
