// HttpClient: the connection object of CMMSHttp.  Posts or fetches one message at a time and reads
// what the relay makes of it.  [RFC 9110; OMA-MMS-ENC 6.1.2, 6.3]
#ifndef MMSBRIX_TRANSPORT_HTTP_CLIENT_H
#define MMSBRIX_TRANSPORT_HTTP_CLIENT_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "model/mmhdr.h"
#include "platform/http.h"
#include "transport/mmshttp.h"

namespace mmsbrix {

/// What a caller adds to requests.
struct RequestSettings {
  std::string headers{};        ///< lines "Name: value", each ended by "\n"
  std::uint64_t sizeLimit = 0;  ///< octets of a message that may be sent, 0 for any number
  platform::SendProgress progress{};
};

class HttpClient {
 public:
  /// Room that a text buffer given to getResult must have, the terminating zero included.
  static constexpr std::size_t kTextSize = 512;

  /// An empty user name or password counts as none.
  HttpClient(std::string user, std::string password);

  /// Opens a session through the proxy, directly when `proxyHost` is empty.  Connects to nothing
  /// yet; false when the platform gives no session.
  /// `trustedCertificates` is a PEM file, empty for the system's certificates; an exchange on which
  /// no octet moves for `stallLimit` ends with 12002; `agent` replaces the library's own User-Agent
  /// unless it is empty.
  bool connect(const std::string& proxyHost, unsigned proxyPort,
               const std::string& trustedCertificates, std::chrono::seconds stallLimit,
               const std::string& agent);
  /// Posts `file` to `url`; true when the relay accepted it.  Connections stay open for the next
  /// one.
  bool sendMms(const char* file, const char* url, const RequestSettings& settings);
  /// The same for a message in memory.
  bool sendMms(std::span<const std::uint8_t> message, const char* url,
               const RequestSettings& settings);
  /// Gets the message at `url`; true when it came, and `pdu` is its octets.
  bool fetchMms(const char* url, const RequestSettings& settings, std::vector<std::uint8_t>& pdu);
  /// Posts a PDU that is answered by nothing but an HTTP status; true when that is a success.
  bool postReport(std::span<const std::uint8_t> pdu, const char* url,
                  const RequestSettings& settings);
  /// The code of the last operation: the relay's status, else the HTTP status or the error.
  /// `text`, if not null, receives the text that goes with it.
  [[nodiscard]] unsigned long getResult(char* text) const;
  [[nodiscard]] CMMSHttp::ResultKind resultKind() const noexcept;
  /// What the code of the last operation does not tell of its failure; "" for nothing.
  [[nodiscard]] const std::string& failureDetail() const noexcept { return detail_; }
  void disconnect();

 private:
  enum class Verb { post, get };

  template <class Step>
  bool perform(const char* url, const Step& step);
  bool exchange(const platform::UrlParts& server, Verb verb, std::span<const std::uint8_t> body,
                const RequestSettings& settings);
  bool submit(const platform::UrlParts& server, std::span<const std::uint8_t> message,
              const RequestSettings& settings);
  unsigned sendAndRead(const std::string& headers, const std::string& shownHeaders,
                       std::span<const std::uint8_t> message,
                       const platform::SendProgress& progress);
  void parseHeaders();
  void readBody();
  bool answerIsMms();
  bool takeSendConf();
  bool takeRetrieveConf();
  void closeRequest();

  const std::string user_;
  const std::string password_;
  // In the order of opening: each lives on the one before it.
  std::unique_ptr<platform::HttpSession> session_;
  std::unique_ptr<platform::HttpConnection> connection_;
  std::unique_ptr<platform::HttpRequest> request_;
  unsigned status_ = 0;       // HTTP status or error of the last exchange
  unsigned relayStatus_ = 0;  // of the last m-send-conf or m-retrieve-conf, 0 when none
  CMMSHttp::ResultKind relayStatusKind_ = CMMSHttp::ResultKind::none;
  std::string responseText_;
  bool httpAnswered_ = false;  // status_ is an HTTP status
  std::string detail_;
  CMMHdrList responseHeaders_;
  std::vector<std::uint8_t> responseBody_;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_HTTP_CLIENT_H
