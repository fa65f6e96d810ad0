// One client port on the protocol thread: a UDP socket, the session over it and the timer of both.
#ifndef MMSBRIX_WAPSTACK_CLIENT_PORT_H
#define MMSBRIX_WAPSTACK_CLIENT_PORT_H

#include <asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <system_error>

#include "wapstack/apidrvvtask.h"
#include "wapstack/wdpsock.h"
#include "wapstack/wsp_application.h"
#include "wapstack/wsp_client.h"

namespace WapStack {

class ClientPort final : public mmsbrix::ProtocolMember,
                         public std::enable_shared_from_this<ClientPort> {
 public:
  using Client = mmsbrix::session::Client;
  using TimePoint = mmsbrix::wtp::TimePoint;

  ClientPort(ApiDriverTask& task, WspClientApplication& application,
             const TransactionSettings& settings);

  /// From the thread that creates the port, before open() is queued.
  std::error_code bind(const WdpAddress& local) { return socket_.open(local); }
  [[nodiscard]] const WdpAddress& local() const noexcept { return socket_.local(); }

  // The rest on the protocol thread.
  void open();
  /// Nothing is called back from here on.
  void close() noexcept;
  /// Tells the application that its session is over, and closes.
  void shutDown() noexcept override;
  /// Lets `request` do something with the session, then carries out what comes of it.
  void apply(const std::function<void(Client&, TimePoint)>& request) noexcept;

 private:
  void receive(const WdpAddress& peer, Octets datagram) noexcept;
  void onTimer() noexcept;
  template <typename Act>
  void guarded(Act act) noexcept;
  /// Sends what is to be sent, tells what is to be told, and sets the timer.
  void pump();
  void tell(const mmsbrix::session::Event& event);
  void setTimer();
  void giveUp(std::uint8_t reason) noexcept;

  ApiDriverTask& task_;
  WspClientApplication* application_;
  const TransactionSettings settings_;
  const std::shared_ptr<asio::io_context> context_;  // goes after what lives on it
  mmsbrix::WdpSocket socket_;
  asio::steady_timer timer_;
  std::optional<TimePoint> timerAt_;
  std::optional<Client> session_;
};

}  // namespace WapStack

#endif  // MMSBRIX_WAPSTACK_CLIENT_PORT_H
