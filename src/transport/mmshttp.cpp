#include "transport/mmshttp.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <string_view>
#include <utility>

#include "platform/ascii.h"
#include "platform/text.h"
#include "transport/http_client.h"

using mmsbrix::HttpClient;

namespace {

HttpClient* clientOf(void* connection) {
  return static_cast<HttpClient*>(connection);
}

std::span<const std::uint8_t> octetsAt(const void* data, std::size_t size) {
  return {static_cast<const std::uint8_t*>(data), data == nullptr ? 0 : size};
}

/// Headers whose value is the transport's own affair, or a secret that a trace would show.
constexpr auto kOwnHeaders = std::to_array<std::string_view>(
    {"Authorization", "Connection", "Content-Length", "Content-Type", "Expect", "Host",
     "Proxy-Authorization", "Transfer-Encoding", "User-Agent"});

// A header value in one line: tabs, and no other control characters. [RFC 9110 5.5]
bool isHeaderValue(std::string_view text) {
  return std::ranges::none_of(text, [](char c) {
    const auto octet = static_cast<unsigned char>(c);
    return (octet < 0x20 && c != '\t') || octet == 0x7F;
  });
}

// A token. [RFC 9110 5.6.2]
bool isHeaderName(std::string_view text) {
  constexpr std::string_view kMarks = "!#$%&'*+-.^_`|~";
  return !text.empty() && std::ranges::all_of(text, [&](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           kMarks.find(c) != std::string_view::npos;
  });
}

}  // namespace

CMMSHttp::CMMSHttp() = default;
CMMSHttp::CMMSHttp(const CMMSHttp& other) = default;
CMMSHttp& CMMSHttp::operator=(const CMMSHttp& other) = default;
CMMSHttp::~CMMSHttp() = default;

bool CMMSHttp::ConnectGtw(const char* host, unsigned int port, unsigned long) {
  auto* client = new HttpClient(user_.data(), password_.data());
  connection_ = client;
  return client->connect(mmsbrix::orEmpty(host), port, trustedCertificates_,
                         std::chrono::seconds(timeoutSeconds_), userAgent_);
}

void CMMSHttp::DisconnectGtw() {
  HttpClient* client = clientOf(std::exchange(connection_, nullptr));
  if (client == nullptr) return;
  client->disconnect();
  delete client;
}

bool CMMSHttp::SendMMS(const char* url, const char* file, unsigned long) {
  return connection_ != nullptr &&
         clientOf(connection_)->sendMms(file, url, {headers_, sizeLimit_, progress_});
}

bool CMMSHttp::SendPdu(const char* url, const void* data, std::size_t size) {
  return connection_ != nullptr &&
         clientOf(connection_)
             ->sendMms(octetsAt(data, size), url, {headers_, sizeLimit_, progress_});
}

bool CMMSHttp::FetchMMS(const char* url, std::vector<std::uint8_t>& pdu) {
  return connection_ != nullptr &&
         clientOf(connection_)->fetchMms(url, {headers_, sizeLimit_, progress_}, pdu);
}

bool CMMSHttp::PostReport(const char* url, const void* data, std::size_t size) {
  return connection_ != nullptr &&
         clientOf(connection_)
             ->postReport(octetsAt(data, size), url, {headers_, sizeLimit_, progress_});
}

bool CMMSHttp::SetUserAgent(const char* agent) {
  if (!isHeaderValue(mmsbrix::orEmpty(agent))) return false;
  userAgent_ = mmsbrix::orEmpty(agent);
  return true;
}

bool CMMSHttp::AddHeader(const char* name, const char* value) {
  const std::string_view nameText = mmsbrix::orEmpty(name);
  const std::string_view valueText = mmsbrix::orEmpty(value);
  const bool own = std::ranges::any_of(kOwnHeaders, [&](std::string_view header) {
    return mmsbrix::equalsIgnoringCase(header, nameText);
  });
  // libcurl takes a line without a value as the wish to send no such header.
  if (own || !isHeaderName(nameText) || !isHeaderValue(valueText) || valueText.empty()) {
    return false;
  }
  headers_.append(nameText).append(": ").append(valueText).append("\n");
  return true;
}

void CMMSHttp::SetSizeLimit(std::uint64_t octets) {
  sizeLimit_ = octets;
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

void CMMSHttp::SetTimeout(unsigned int seconds) {
  // More than any use, and what every platform's timers can hold.
  constexpr unsigned kMostSeconds = 24 * 60 * 60;
  timeoutSeconds_ = seconds == 0 ? kDefaultTimeoutSeconds : std::min(seconds, kMostSeconds);
}

void CMMSHttp::SetProgress(Progress progress) {
  progress_ = std::move(progress);
}
