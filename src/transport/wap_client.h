// WspClient: the connection object of CMMSWap, an application of the WAP stack.  The caller's
// thread makes requests and waits; the callbacks run on the stack's thread.  Both meet at the state
// word: what a callback writes it writes before the state that ends the wait, and the caller reads
// it afterwards.
#ifndef MMSBRIX_TRANSPORT_WAP_CLIENT_H
#define MMSBRIX_TRANSPORT_WAP_CLIENT_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "transport/mmswap.h"
#include "transport/wap_waiting.h"
#include "wapstack/wsp_application.h"

namespace mmsbrix {

/// The text of a reason code, or of the HTTP status that a WSP status stands for; "" for others.
[[nodiscard]] const char* sessionCodeText(std::uint8_t code) noexcept;
/// The HTTP status that a WSP status stands for.
[[nodiscard]] unsigned httpStatusOf(std::uint8_t wspStatus) noexcept;

class WspClient final : public WapStack::WspClientApplication {
 public:
  WspClient(WapStack::ApiDriverTask& task, const WapTiming& timing,
            CMMSWap::NotificationHandler notified);
  ~WspClient() override;

  bool Connect(const char* host, unsigned port);
  bool SendMMS(const char* url, const char* file);
  /// The same for a message in memory.
  bool SendMMS(const char* url, Octets message);
  void Disconnect();
  unsigned long GetResult(char* text) const;

  /// True while an operation waits, which a function of the host's may see that is called
  /// meanwhile.
  [[nodiscard]] bool waiting() const noexcept { return waiting_; }
  /// For a client that waits: it is to be disconnected as soon as it does not.
  void disconnectLater() noexcept { disconnectLater_ = true; }
  [[nodiscard]] bool toBeDisconnected() const noexcept { return disconnectLater_; }

  [[nodiscard]] CMMSWap::Outcome outcome() const;
  /// Why the last operation failed.
  [[nodiscard]] const char* failureDetail() const;

 protected:
  void s_Connect_cnf(Octets headers, const WapStack::Agreement& agreement) override;
  void s_Exception_ind(std::uint8_t reason) override;
  void s_Disconnect_ind(std::uint8_t reason, const std::vector<WdpAddress>& redirect,
                        Octets headers, Octets body) override;
  void s_MethodInvoke_cnf(WapStack::TransactionId id) override;
  void s_MethodResult_ind(WapStack::TransactionId id, std::uint8_t status, Octets headers,
                          Octets body) override;
  void s_MethodAbort_ind(WapStack::TransactionId id, std::uint8_t reason) override;
  void s_Suspend_ind(std::uint8_t reason) override;
  void s_Resume_cnf(Octets headers) override;
  void s_Unit_MethodResult_ind(WapStack::TransactionId id, std::uint8_t status, Octets headers,
                               Octets body) override;
  [[nodiscard]] const WdpAddress& serverAddress() const override;
  void s_Push_ind(Octets headers, Octets body) override;
  void s_ConfirmedPush_ind(WapStack::TransactionId id, Octets headers, Octets body) override;

 private:
  enum State : std::uint32_t {
    kDisconnected = 0,
    kConnected = 1,
    kConnecting = 2,
    kPosting = 3,
    kDisconnecting = 5,
  };

  bool openPort(const char* host, unsigned port);
  void connectTo(const WdpAddress& server);
  void waitWhile(State state);
  bool post(const char* url, std::shared_ptr<std::vector<std::uint8_t>> message);
  [[nodiscard]] WapStack::TransactionSettings transactionSettings() const;
  void takeAnswer(Octets headers, Octets body);
  bool takePush(Octets headers, Octets body);
  bool end(CMMSWap::Outcome outcome, std::string detail);
  bool endConnecting();
  bool endPosting();
  [[nodiscard]] std::string gatewayName() const;
  [[nodiscard]] CMMSWap::Outcome lostOutcome() const;
  [[nodiscard]] std::string lostDetail() const;

  WaitedState state_{kDisconnected};
  WdpAddress gateway_;
  WdpAddress local_;
  std::optional<WdpAddress> redirect_;
  WapStack::Capabilities requested_;
  std::uint32_t transactionCounter_ = 1;
  std::uint8_t result_ = 0;
  std::string responseText_;

  std::atomic<std::uint8_t> endReason_{0};  // of the session; it may end at any time
  std::uint8_t abortReason_ = 0;            // of the method
  const char* answerFault_ = "";            // why an OK is none
  WapStack::TransactionId answered_ = 0;    // the stack's own

  // The caller's own.
  const WapTiming timing_;
  const CMMSWap::NotificationHandler notified_;
  std::vector<std::uint8_t> sessionHeaders_;
  WdpAddress server_;  // that was spoken to last
  bool waiting_ = false;
  bool disconnectLater_ = false;
  CMMSWap::Outcome outcome_ = CMMSWap::Outcome::none;
  std::string detail_;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_WAP_CLIENT_H
