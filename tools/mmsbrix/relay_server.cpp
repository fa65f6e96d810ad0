#include "relay_server.h"

#include <filesystem>
#include <utility>

#include "host.h"
#include "relay_desk.h"
#include "relay_http.h"
#include "relay_wap.h"

namespace mmsbrix::tool {

struct RelayServer::State {
  explicit State(RelayOptions given)
      : options(std::move(given)), desk(options), wap(options, desk), http(options, desk) {}
  ~State() {
    wap.stop();
    http.stop();
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  const RelayOptions options;
  RelayDesk desk;
  RelayWapSide wap;
  RelayHttpSide http;
};

std::unique_ptr<RelayServer> RelayServer::start(RelayOptions options, std::string& error) {
  for (const std::string& directory : {options.storeDirectory, options.notifyDirectory}) {
    std::error_code failure;
    if (!directory.empty()) std::filesystem::create_directories(host::pathOf(directory), failure);
    if (failure) {
      error = directory + ": " + failure.message();
      return nullptr;
    }
  }
  auto state = std::make_unique<State>(std::move(options));
  const RelayOptions& given = state->options;
  if (given.http && !state->http.start(error)) return nullptr;
  if (given.wap && !state->wap.start(*given.wap, error)) return nullptr;
  return std::unique_ptr<RelayServer>(new RelayServer(std::move(state)));
}

RelayServer::RelayServer(std::unique_ptr<State> state) noexcept : state_(std::move(state)) {}

RelayServer::~RelayServer() = default;

std::uint16_t RelayServer::port() const noexcept {
  return state_->http.port();
}

std::string RelayServer::address() const {
  const std::string& host = state_->options.host;
  const bool ipv6 = host.find(':') != std::string::npos;
  return (ipv6 ? "[" + host + "]" : host) + ":" + std::to_string(state_->http.port());
}

std::string RelayServer::wapAddress() const {
  return state_->wap.address();
}

std::vector<RelayExchange> RelayServer::exchanges() const {
  return state_->desk.exchanges();
}

std::uint64_t RelayServer::connectionCount() const noexcept {
  return state_->http.connectionCount();
}

}  // namespace mmsbrix::tool
