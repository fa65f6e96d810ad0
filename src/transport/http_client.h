// HttpClient: the connection object of CMMSHttp.  Posts one message file at a time and reads what
// the relay makes of it.  [RFC 9110; OMA-MMS-ENC 6.1.2]
#ifndef MMSBRIX_TRANSPORT_HTTP_CLIENT_H
#define MMSBRIX_TRANSPORT_HTTP_CLIENT_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "model/mmhdr.h"
#include "platform/http.h"

namespace mmsbrix {

class HttpClient {
 public:
  /// Room that a text buffer given to getResult must have, the terminating zero included.
  static constexpr std::size_t kTextSize = 512;

  /// An empty user name or password counts as none.
  HttpClient(std::string user, std::string password);

  /// Opens a session through the proxy, directly when `proxyHost` is empty.  Connects to nothing
  /// yet; false when the platform gives no session.
  /// `trustedCertificates` is a PEM file, empty for the system's certificates.
  bool connect(const std::string& proxyHost, unsigned proxyPort,
               const std::string& trustedCertificates);
  /// Posts `file` to `url`; true when the relay accepted it.  Connections stay open for the next
  /// one.
  bool sendMms(const char* file, const char* url, const platform::SendProgress& progress);
  /// The code of the last sendMms: the relay's response status, else the HTTP status or the error.
  /// `text`, if not null, receives the text that goes with it.
  [[nodiscard]] unsigned long getResult(char* text) const;
  void disconnect();

 private:
  bool submit(const platform::UrlParts& server, std::span<const std::uint8_t> message,
              const platform::SendProgress& progress);
  unsigned sendAndRead(const std::string& headers, const std::string& shownHeaders,
                       std::span<const std::uint8_t> message,
                       const platform::SendProgress& progress);
  void parseHeaders();
  void readBody();
  bool takeSendConf();
  void closeRequest();

  const std::string user_;
  const std::string password_;
  // In the order of opening: each lives on the one before it.
  std::unique_ptr<platform::HttpSession> session_;
  std::unique_ptr<platform::HttpConnection> connection_;
  std::unique_ptr<platform::HttpRequest> request_;
  unsigned status_ = 0;          // HTTP status or error of the last exchange
  unsigned responseStatus_ = 0;  // of the last m-send-conf, 0 when none
  std::string responseText_;
  CMMHdrList responseHeaders_;
  std::vector<std::uint8_t> responseBody_;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_HTTP_CLIENT_H
