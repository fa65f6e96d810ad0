/// @file
/// CMMSHttp: submission to an MMS relay by HTTP POST, and fetching from it by GET, through a proxy
/// or directly.
#ifndef MMSBRIX_TRANSPORT_MMSHTTP_H
#define MMSBRIX_TRANSPORT_MMSHTTP_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "../export.h"
#include "mmscomm.h"

/// The HTTP transport.  It blocks while it sends or fetches.  http and https URLs; certificates are
/// verified.
class MMSBRIX_API CMMSHttp : public CMMSComm {
 public:
  CMMSHttp();
  ///@{
  /// Settings are copied; the connection object is shared, and only one of both may disconnect.
  CMMSHttp(const CMMSHttp& other);
  CMMSHttp& operator=(const CMMSHttp& other);
  ///@}
  /// Does not disconnect: call DisconnectGtw first.
  ~CMMSHttp() override;

  /// `host` and `port` are the HTTP proxy; a null or empty host means a direct connection.  No
  /// connection is attempted yet.  `param` is ignored.
  bool ConnectGtw(const char* host, unsigned int port, unsigned long param) override;
  /// Closes the session, with any kept connection to the proxy or relay.
  void DisconnectGtw() override;
  /// Posts the file to `url`; `param` is ignored.  False when not connected.
  bool SendMMS(const char* url, const char* file, unsigned long param) override;
  /// 0, with `text` untouched, when not connected.
  unsigned long GetResult(char* text) override;
  /// Does nothing and returns true.
  bool Abort() override;

  /// SendMMS for a message in memory: posts `size` octets at `data` to `url`.
  bool SendPdu(const char* url, const void* data, std::size_t size);
  /// Gets the message that waits at `url`, the X-Mms-Content-Location of its notification.  True
  /// when an m-retrieve-conf with a message came; `pdu` then is its octets, and stays as it was
  /// otherwise.  GetResult gives the X-Mms-Retrieve-Status (Ok when none is stated) with its text,
  /// else what it gives for SendMMS.  [OMA-MMS-ENC 6.3]
  bool FetchMMS(const char* url, std::vector<std::uint8_t>& pdu);
  /// Posts a PDU to which the relay answers with an HTTP status only: those of `encodePdu` in
  /// mms/receiving.h.  True for a status of success, 200 to 299.
  bool PostReport(const char* url, const void* data, std::size_t size);

  /// Replaces the User-Agent of the following ConnectGtw, by which relays choose what they send;
  /// null or empty for the library's own.  False, with nothing changed, for a text with control
  /// characters.
  bool SetUserAgent(const char* agent);
  /// Adds a header to all following requests, "x-wap-profile" say.  False, with nothing added, for
  /// what is no header of HTTP, and for those that the transport states by itself: Authorization,
  /// Connection, Content-Length, Content-Type, Expect, Host, Proxy-Authorization,
  /// Transfer-Encoding, User-Agent.  [RFC 9110 5]
  bool AddHeader(const char* name, const char* value);
  /// A larger message is not submitted, nothing of it goes out, and the code is 223; 0 for no
  /// limit.
  void SetSizeLimit(std::uint64_t octets);

  /// What kind of number GetResult gives; the ranges of statuses overlap.
  enum class ResultKind {
    none,            ///< nothing is known
    responseStatus,  ///< the relay's X-Mms-Response-Status
    httpStatus,      ///< the relay or proxy answered, but with no MMS PDU or none that counts
    error,           ///< a WinINet or Win32 error
    retrieveStatus,  ///< the relay's X-Mms-Retrieve-Status
  };
  /// Of the last operation.
  [[nodiscard]] ResultKind GetResultKind() const noexcept;
  /// Why the last operation was no success, in words, where its code alone does not tell ("the
  /// answer is text/html, no MMS message"); "" when there is nothing to add.  Valid until the next
  /// operation or DisconnectGtw.
  [[nodiscard]] const char* GetFailureDetail() const noexcept;

  /// Told how many octets of a message are sent, or have come, and how many there are, 0 when that
  /// is not known: when that changes, and about once a second while nothing does.  Returning false
  /// cancels the operation under way, whose code then is 12017; so does an exception.
  using Progress = std::function<bool(std::uint64_t octetsDone, std::uint64_t octetsTotal)>;
  /// Replaces the function that the following operations tell; an empty one ends that.
  void SetProgress(Progress progress);

  /// Certificates (a PEM file) that the following ConnectGtw trusts for https, instead of the
  /// system's; null or empty for the system's.
  void SetTrustedCertificates(const char* pemFile);

  /// Seconds without an octet in either direction after which the exchanges of the following
  /// ConnectGtw end with 12002; 0 for the default.  A day at most.
  void SetTimeout(unsigned int seconds);
  static constexpr unsigned int kDefaultTimeoutSeconds = 60;  ///< without SetTimeout

 private:
  std::string trustedCertificates_;
  std::string userAgent_;
  std::string headers_;  ///< lines "Name: value", each ended by "\n"
  std::uint64_t sizeLimit_ = 0;
  unsigned int timeoutSeconds_ = kDefaultTimeoutSeconds;
  Progress progress_;
};

#endif  // MMSBRIX_TRANSPORT_MMSHTTP_H
