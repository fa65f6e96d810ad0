#include "relay_http.h"

namespace mmsbrix::tool {

struct RelayHttpSide::State {};

bool RelayHttpSide::isThere() noexcept {
  return false;
}

RelayHttpSide::RelayHttpSide(const RelayOptions&, RelayDesk&) {}

RelayHttpSide::~RelayHttpSide() = default;

bool RelayHttpSide::start(std::string& error) {
  error = kNoHttpRelay;
  return false;
}

void RelayHttpSide::stop() {}

std::uint16_t RelayHttpSide::port() const noexcept {
  return 0;
}

std::uint64_t RelayHttpSide::connectionCount() const noexcept {
  return 0;
}

}  // namespace mmsbrix::tool
