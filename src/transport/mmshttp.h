// CMMSHttp: submission to an MMS relay by HTTP POST, through a proxy or directly.
#ifndef MMSBRIX_TRANSPORT_MMSHTTP_H
#define MMSBRIX_TRANSPORT_MMSHTTP_H

#include <cstdint>
#include <functional>
#include <string>

#include "../export.h"
#include "mmscomm.h"

/// The HTTP transport.  It blocks while it sends.  http and https URLs; certificates are verified.
class MMSBRIX_API CMMSHttp : public CMMSComm {
 public:
  CMMSHttp();
  CMMSHttp(const CMMSHttp& other);
  CMMSHttp& operator=(const CMMSHttp& other);
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

  /// Told how many octets of a message are sent and how many there are: when that changes, and
  /// about once a second while nothing does.  Returning false cancels the SendMMS under way, whose
  /// code then is 12017; so does an exception.
  using Progress = std::function<bool(std::uint64_t octetsSent, std::uint64_t octetsTotal)>;
  /// Replaces the function that the following SendMMS calls tell; an empty one ends that.
  void SetProgress(Progress progress);

  /// Certificates (a PEM file) that the following ConnectGtw trusts for https, instead of the
  /// system's; null or empty for the system's.
  void SetTrustedCertificates(const char* pemFile);

 private:
  std::string trustedCertificates_;
  Progress progress_;
};

#endif  // MMSBRIX_TRANSPORT_MMSHTTP_H
