// The WAP side of the relay: a gateway that is its own server, so that every POST that comes
// through it is a submission to the relay.
#ifndef MMSBRIX_TOOLS_RELAY_WAP_H
#define MMSBRIX_TOOLS_RELAY_WAP_H

#include <mmsbrix/transport/wap_gateway.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "relay_desk.h"

namespace mmsbrix::tool {

class RelayWapSide {
 public:
  /// Both must outlive it.
  RelayWapSide(const RelayOptions& options, RelayDesk& desk) : options_(options), desk_(desk) {}
  RelayWapSide(const RelayWapSide&) = delete;
  RelayWapSide& operator=(const RelayWapSide&) = delete;

  /// Starts to listen; false on failure, and `error` says why.
  bool start(const RelayWap& wap, std::string& error);
  void stop() { gateway_.reset(); }
  /// "host:port"; "" when it does not listen.
  [[nodiscard]] std::string address() const {
    return gateway_ == nullptr ? std::string() : gateway_->address();
  }

 private:
  WapResponse answer(const WapRequest& request);
  void end(std::uint32_t id);

  const RelayOptions& options_;
  RelayDesk& desk_;
  std::map<std::uint32_t, RelayExchange> open_;  // by the gateway's thread only
  std::unique_ptr<WapGateway> gateway_;          // the last: its thread uses the others
};

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_RELAY_WAP_H
