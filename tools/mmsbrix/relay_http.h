// The HTTP side of the relay: an origin server, and a proxy that answers by itself.
// relay_http.cpp has it over libmicrohttpd, relay_http_none.cpp stands in its place where that is
// missing.
#ifndef MMSBRIX_TOOLS_RELAY_HTTP_H
#define MMSBRIX_TOOLS_RELAY_HTTP_H

#include <cstdint>
#include <memory>
#include <string>

#include "relay_desk.h"

namespace mmsbrix::tool {

/// What is said where there is none.
inline constexpr char kNoHttpRelay[] = "this build has no HTTP relay; --wap is there";

class RelayHttpSide {
 public:
  /// False in a program that was built without it, where `start` fails.
  [[nodiscard]] static bool isThere() noexcept;

  /// Both must outlive it.
  RelayHttpSide(const RelayOptions& options, RelayDesk& desk);
  RelayHttpSide(const RelayHttpSide&) = delete;
  RelayHttpSide& operator=(const RelayHttpSide&) = delete;
  ~RelayHttpSide();

  /// Starts to listen; false on failure, and `error` says why.
  bool start(std::string& error);
  /// Takes no connection any more, and ends those that wait.
  void stop();
  [[nodiscard]] std::uint16_t port() const noexcept;
  /// Connections taken since the start.
  [[nodiscard]] std::uint64_t connectionCount() const noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_RELAY_HTTP_H
