#include "wapstack/wininput.h"

#include <asio/buffer.hpp>
#include <utility>

#include "wapstack/udp.h"

namespace mmsbrix {

void DatagramInput::start(Receiver receiver) {
  receiver_ = std::move(receiver);
  receiveNext();
}

void DatagramInput::stop() noexcept {
  if (stopped_) return;
  stopped_ = true;
  asio::error_code ignored;
  socket.close(ignored);
}

void DatagramInput::receiveNext() {
  socket.async_receive_from(
      asio::buffer(buffer_), from_,
      [self = shared_from_this()](const asio::error_code& error, std::size_t size) {
        if (self->stopped_) return;
        // Errors tell of datagrams that we sent (port unreachable); there the peer is just silent.
        if (!error) {
          const Receiver& receiver = self->receiver_;
          receiver(toWdpAddress(self->from_), Octets(self->buffer_).first(size));
        }
        if (!self->stopped_) self->receiveNext();
      });
}

}  // namespace mmsbrix
