/// @file
/// CMMSWap: submission to an MMS relay through a WAP gateway, as a WSP POST in a session over WTP
/// and UDP.  [WAP-230, WAP-224; OMA-MMS-ENC 6.1.1]
#ifndef MMSBRIX_TRANSPORT_MMSWAP_H
#define MMSBRIX_TRANSPORT_MMSWAP_H

#include <cstddef>
#include <functional>

#include "../export.h"
#include "../model/mmsg.h"
#include "mmscomm.h"
#include "wap_stack.h"

/// The WAP transport.  Connecting and sending block; meanwhile the host's events are dispatched.
/// Codes below 0x80 of GetResult are WSP statuses (0x44 stands for HTTP's 404), those from 0x80 on
/// the relay's response status.
class MMSBRIX_API CMMSWap : public CMMSComm {
 public:
  CMMSWap();
  ///@{
  /// Settings are copied; the session is shared, and only one of both may disconnect.
  CMMSWap(const CMMSWap& other);
  CMMSWap& operator=(const CMMSWap& other);
  ///@}
  /// Does not disconnect: call DisconnectGtw first.
  ~CMMSWap() override;

  /// Opens a session with the gateway at `host` (a name, an IPv4 or an IPv6 address) and UDP
  /// `port`, usually 9201.  `param` is ignored.  False when there is no session; DisconnectGtw must
  /// follow all the same.
  bool ConnectGtw(const char* host, unsigned int port, unsigned long param) override;
  /// Ends the session.
  void DisconnectGtw() override;
  /// Posts the file to `url`; `param` is ignored.  False when not connected, when the file cannot
  /// be read, and when the relay did not accept the message.
  bool SendMMS(const char* url, const char* file, unsigned long param) override;
  /// SendMMS for a message in memory: posts `size` octets at `data`, of which it makes a copy.
  bool SendPdu(const char* url, const void* data, std::size_t size);
  /// 0, with `text` untouched, when not connected.
  unsigned long GetResult(char* text) override;
  /// Does nothing and returns true.
  bool Abort() override;

  /// Which layer the last ConnectGtw or SendMMS ended in.
  enum class Outcome {
    none,            ///< nothing was tried, or no session is open
    accepted,        ///< by the relay
    noPort,          ///< the gateway's name, the route or the port could not be had
    noAnswer,        ///< the gateway stays silent
    refused,         ///< the gateway refused the session, or redirected a second time
    disconnected,    ///< the session ended meanwhile
    aborted,         ///< the exchange was aborted, by the gateway or by us
    gatewayStatus,   ///< a WSP status other than OK
    relayStatus,     ///< the relay's answer is a refusal, or no answer that can be used
    fileUnreadable,  ///< the message
  };
  /// `none` when not connected.
  [[nodiscard]] Outcome GetOutcome() const noexcept;
  /// The same in words, with the reason that the layer gave: "the gateway 10.1.1.1:9201 does not
  /// answer"; "" after success.  Valid until the next call of the object.
  [[nodiscard]] const char* GetFailureDetail() const noexcept;

  /// For the following ConnectGtw calls.
  void SetTiming(const mmsbrix::WapTiming& timing) noexcept;

  /// Told of an m-notification-ind that comes through the session, on the stack's thread; it must
  /// not call this object.  What it throws is logged, and the push counts as not taken.
  using NotificationHandler = std::function<void(const CMMsg& notification)>;
  /// For the following ConnectGtw calls: sessions then take pushes.  An empty one ends that.
  void SetNotificationHandler(NotificationHandler handler);

 private:
  mmsbrix::WapTiming timing_;
  NotificationHandler notified_;
};

#endif  // MMSBRIX_TRANSPORT_MMSWAP_H
