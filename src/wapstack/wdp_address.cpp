#include "wapstack/wdp_address.h"

#include <algorithm>

#include "wapstack/udp.h"

namespace mmsbrix {

asio::ip::udp::endpoint toEndpoint(const WdpAddress& address) {
  if (address.size == 4) {
    asio::ip::address_v4::bytes_type octets{};
    std::copy_n(address.octets.begin(), octets.size(), octets.begin());
    return {asio::ip::address_v4(octets), address.port};
  }
  asio::ip::address_v6::bytes_type octets{};
  std::copy_n(address.octets.begin(), octets.size(), octets.begin());
  return {asio::ip::address_v6(octets, address.scope), address.port};
}

WdpAddress toWdpAddress(const asio::ip::udp::endpoint& endpoint) {
  WdpAddress address;
  address.port = endpoint.port();
  if (endpoint.address().is_v4()) {
    std::ranges::copy(endpoint.address().to_v4().to_bytes(), address.octets.begin());
  } else {
    const asio::ip::address_v6 v6 = endpoint.address().to_v6();
    address.size = 16;
    address.scope = static_cast<std::uint32_t>(v6.scope_id());
    std::ranges::copy(v6.to_bytes(), address.octets.begin());
  }
  return address;
}

std::string hostText(const WdpAddress& address) {
  return toEndpoint(address).address().to_string();
}

std::string toString(const WdpAddress& address) {
  const std::string host = hostText(address);
  return (address.size == 4 ? host : "[" + host + "]") + ":" + std::to_string(address.port);
}

}  // namespace mmsbrix
