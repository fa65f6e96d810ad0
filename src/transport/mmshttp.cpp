#include "transport/mmshttp.h"

#include <string>
#include <utility>

#include "platform/text.h"
#include "transport/http_client.h"

using mmsbrix::HttpClient;

namespace {

HttpClient* clientOf(void* connection) {
  return static_cast<HttpClient*>(connection);
}

}  // namespace

CMMSHttp::CMMSHttp() = default;
CMMSHttp::CMMSHttp(const CMMSHttp& other) = default;
CMMSHttp& CMMSHttp::operator=(const CMMSHttp& other) = default;
CMMSHttp::~CMMSHttp() = default;

bool CMMSHttp::ConnectGtw(const char* host, unsigned int port, unsigned long) {
  auto* client = new HttpClient(user_.data(), password_.data());
  connection_ = client;
  return client->connect(mmsbrix::orEmpty(host), port, trustedCertificates_);
}

void CMMSHttp::DisconnectGtw() {
  HttpClient* client = clientOf(std::exchange(connection_, nullptr));
  if (client == nullptr) return;
  client->disconnect();
  delete client;
}

bool CMMSHttp::SendMMS(const char* url, const char* file, unsigned long) {
  return connection_ != nullptr && clientOf(connection_)->sendMms(file, url, progress_);
}

unsigned long CMMSHttp::GetResult(char* text) {
  return connection_ == nullptr ? 0 : clientOf(connection_)->getResult(text);
}

bool CMMSHttp::Abort() {
  return true;
}

CMMSHttp::ResultKind CMMSHttp::GetResultKind() const noexcept {
  return connection_ == nullptr ? ResultKind::none : clientOf(connection_)->resultKind();
}

const char* CMMSHttp::GetFailureDetail() const noexcept {
  return connection_ == nullptr ? "" : clientOf(connection_)->failureDetail().c_str();
}

void CMMSHttp::SetTrustedCertificates(const char* pemFile) {
  trustedCertificates_ = mmsbrix::orEmpty(pemFile);
}

void CMMSHttp::SetProgress(Progress progress) {
  progress_ = std::move(progress);
}
