#include "transport/mmswap.h"

#include <utility>

#include "platform/text.h"
#include "transport/trace.h"
#include "transport/wap_client.h"
#include "transport/wap_start.h"

using mmsbrix::WspClient;

namespace {

WspClient* clientOf(void* connection) {
  return static_cast<WspClient*>(connection);
}

bool isWaiting(void* connection) {
  return connection != nullptr && clientOf(connection)->waiting();
}

/// Disconnects if that was asked for while the client was waiting.
bool endsNow(CMMSWap& wap, const WspClient& client) {
  const bool ends = client.toBeDisconnected();
  if (ends) wap.DisconnectGtw();
  return ends;
}

}  // namespace

CMMSWap::CMMSWap() = default;
CMMSWap::CMMSWap(const CMMSWap& other) = default;
CMMSWap& CMMSWap::operator=(const CMMSWap& other) = default;
CMMSWap::~CMMSWap() = default;

bool CMMSWap::ConnectGtw(const char* host, unsigned int port, unsigned long) {
  if (isWaiting(connection_)) return false;
  DisconnectGtw();
  auto& task = mmsbrix::startWapStack();
  auto* client = new WspClient(task, timing_, notified_);
  connection_ = client;
  const bool connected = client->Connect(mmsbrix::orEmpty(host), port);
  return !endsNow(*this, *client) && connected;
}

void CMMSWap::DisconnectGtw() {
  if (isWaiting(connection_)) return clientOf(connection_)->disconnectLater();
  WspClient* client = clientOf(connection_);
  if (client == nullptr) return;
  client->Disconnect();
  delete client;
  connection_ = nullptr;
}

bool CMMSWap::SendMMS(const char* url, const char* file, unsigned long) {
  if (connection_ == nullptr || isWaiting(connection_)) return false;
  WspClient& client = *clientOf(connection_);
  const bool accepted = client.SendMMS(mmsbrix::orEmpty(url), mmsbrix::orEmpty(file));
  endsNow(*this, client);
  return accepted;
}

bool CMMSWap::SendPdu(const char* url, const void* data, std::size_t size) {
  if (connection_ == nullptr || isWaiting(connection_)) return false;
  WspClient& client = *clientOf(connection_);
  const auto* octets = static_cast<const std::uint8_t*>(data);
  const bool accepted =
      client.SendMMS(mmsbrix::orEmpty(url), mmsbrix::Octets(octets, data == nullptr ? 0 : size));
  endsNow(*this, client);
  return accepted;
}

unsigned long CMMSWap::GetResult(char* text) {
  return connection_ == nullptr ? 0 : clientOf(connection_)->GetResult(text);
}

bool CMMSWap::Abort() {
  return true;
}

CMMSWap::Outcome CMMSWap::GetOutcome() const noexcept {
  return connection_ == nullptr ? Outcome::none : clientOf(connection_)->outcome();
}

const char* CMMSWap::GetFailureDetail() const noexcept {
  return connection_ == nullptr ? "" : clientOf(connection_)->failureDetail();
}

void CMMSWap::SetTiming(const mmsbrix::WapTiming& timing) noexcept {
  timing_ = timing;
}

void CMMSWap::SetNotificationHandler(NotificationHandler handler) {
  notified_ = std::move(handler);
}
