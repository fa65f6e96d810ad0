#include "wapstack/wdpsock.h"

#include <algorithm>
#include <array>
#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <charconv>
#include <utility>

#include "wapstack/udp.h"
#include "wapstack/wininput.h"

namespace mmsbrix {
namespace {

using Udp = asio::ip::udp;

/// Room for the packets of a group from several peers at once.
constexpr int kSocketBuffer = 1 << 20;

struct HostAndPort {
  std::string host;
  std::string port;
};

HostAndPort split(std::string_view text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) return {std::string(text), ""};
  std::string_view host = text.substr(0, colon);
  if (host.size() > 1 && host.front() == '[' && host.back() == ']') {
    host = host.substr(1, host.size() - 2);
  }
  return {std::string(host), std::string(text.substr(colon + 1))};
}

}  // namespace

std::uint16_t portType(std::uint16_t port) noexcept {
  constexpr std::array<std::uint16_t, 12> kRegistered{2805, 2923, 2948, 2949, 9200, 9201,
                                                      9202, 9203, 9204, 9205, 9206, 9207};
  return std::ranges::find(kRegistered, port) == kRegistered.end() ? std::uint16_t{0} : port;
}

std::optional<WdpAddress> resolveAddress(std::string_view hostAndPort, std::error_code& error) {
  const HostAndPort parts = split(hostAndPort);
  if (parts.host.empty()) {
    error = std::make_error_code(std::errc::destination_address_required);
    return std::nullopt;
  }
  // Some systems would take 65536 more than a port for the port.
  std::uint16_t port = 0;
  const char* const end = parts.port.data() + parts.port.size();
  if (const auto read = std::from_chars(parts.port.data(), end, port);
      read.ec != std::errc() || read.ptr != end) {
    error = std::make_error_code(std::errc::invalid_argument);
    return std::nullopt;
  }
  asio::io_context context(1);
  Udp::resolver resolver(context);
  const auto found =
      resolver.resolve(parts.host, parts.port, Udp::resolver::numeric_service, error);
  if (error || found.empty()) return std::nullopt;
  return toWdpAddress(found.begin()->endpoint());
}

std::optional<WdpAddress> selectLocalIPaddress(LocalAddressChoice choice, const WdpAddress& peer) {
  WdpAddress local;
  local.size = peer.size;
  if (choice == LocalAddressChoice::any) return local;
  // Connecting sends nothing: it asks the system for the route.
  asio::io_context context(1);
  Udp::socket probe(context);
  asio::error_code error;
  const Udp::endpoint to = toEndpoint(peer);
  probe.open(to.protocol(), error);
  if (!error) probe.connect(to, error);
  if (error) return std::nullopt;
  local = toWdpAddress(probe.local_endpoint(error));
  local.port = 0;
  if (error) return std::nullopt;
  return local;
}

WdpSocket::WdpSocket(asio::io_context& context)
    : input_(std::make_shared<DatagramInput>(context)) {}

WdpSocket::~WdpSocket() {
  close();
}

std::error_code WdpSocket::open(const WdpAddress& local) {
  Udp::socket& socket = input_->socket;
  const Udp::endpoint at = toEndpoint(local);
  asio::error_code error;
  asio::error_code ignored;
  socket.open(at.protocol(), error);
  if (!error) socket.bind(at, error);
  if (!error) socket.non_blocking(true, error);
  if (error) {
    close();
    return error;
  }
  socket.set_option(asio::socket_base::receive_buffer_size(kSocketBuffer), ignored);
  socket.set_option(asio::socket_base::send_buffer_size(kSocketBuffer), ignored);
  local_ = toWdpAddress(socket.local_endpoint(error));
  return error;
}

void WdpSocket::receive(Receiver receiver) {
  input_->start(std::move(receiver));
}

std::error_code WdpSocket::send(const WdpAddress& peer, Octets datagram) {
  asio::error_code error;
  input_->socket.send_to(asio::buffer(datagram.data(), datagram.size()), toEndpoint(peer), 0,
                         error);
  return error;
}

void WdpSocket::close() noexcept {
  input_->stop();
}

}  // namespace mmsbrix
