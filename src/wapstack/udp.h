// Between WDP addresses and those of the network library.
#ifndef MMSBRIX_WAPSTACK_UDP_H
#define MMSBRIX_WAPSTACK_UDP_H

#include <asio/ip/udp.hpp>

#include "wapstack/wdp_address.h"

namespace mmsbrix {

[[nodiscard]] asio::ip::udp::endpoint toEndpoint(const WdpAddress& address);
[[nodiscard]] WdpAddress toWdpAddress(const asio::ip::udp::endpoint& endpoint);

}  // namespace mmsbrix

#endif  // MMSBRIX_WAPSTACK_UDP_H
