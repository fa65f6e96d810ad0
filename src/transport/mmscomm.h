/// @file
/// CMMSComm: the transport through which a finished MMS file is submitted to an MMS relay.
///
/// Result convention: SendMMS returns true only for a delivered and accepted message.  GetResult
/// then returns one number whose range tells its kind: an MMS response status (0x80 to 0xFF), an
/// HTTP status (100 to 505), a WinINet error (12000 to 12174, the same numbers on every platform),
/// a Win32 error (such as 2, file not found), or 0 (no information).
#ifndef MMSBRIX_TRANSPORT_MMSCOMM_H
#define MMSBRIX_TRANSPORT_MMSCOMM_H

#include <array>

#include "../export.h"

/// The base of the transports.  Not locked: one object, one thread at a time.  Copies are shallow:
/// both refer to one connection object, and only one of them may disconnect.
class MMSBRIX_API CMMSComm {
 public:
  CMMSComm();
  ///@{
  /// Shallow: both objects then refer to one connection object.
  CMMSComm(const CMMSComm& other);
  CMMSComm& operator=(const CMMSComm& other);
  ///@}

  // The order of these operations is the order of the virtual table; it is part of the interface.
  virtual ~CMMSComm();
  /// Opens the way to a gateway or proxy; DisconnectGtw must follow, whatever the result.  The base
  /// returns false.
  virtual bool ConnectGtw(const char* host, unsigned int port, unsigned long param);
  /// Ends what ConnectGtw opened; harmless when there is nothing.  The base does nothing.
  virtual void DisconnectGtw();
  /// Submits the encoded message in `file` to the relay's `url`.  The base returns false.
  virtual bool SendMMS(const char* url, const char* file, unsigned long param);
  /// The code of the last SendMMS; `text`, if not null, has room for 512 characters and receives
  /// the text that goes with it.  The base returns 0.
  virtual unsigned long GetResult(char* text);
  /// Keeps user name and password, each cut to 255 characters; null empties it.
  virtual void SetCredentials(const char* user, const char* password);
  /// Copies them out, each cut to its size including the terminating zero; a null pointer is
  /// skipped.
  virtual void GetCredentials(char* user, int userSize, char* password, int passwordSize);
  /// Kept for callers that have it; no transport aborts by it.  The base returns true.
  virtual bool Abort();

 protected:
  /// Octets of a kept user name or password, the terminating zero included.
  static constexpr std::size_t kCredentialSize = 256;

  void* connection_ =
      nullptr;  ///< the concrete transport's connection object, null while unconnected
  std::array<char, kCredentialSize> user_{};      ///< zero-terminated, "" for none
  std::array<char, kCredentialSize> password_{};  ///< likewise
};

#endif  // MMSBRIX_TRANSPORT_MMSCOMM_H
