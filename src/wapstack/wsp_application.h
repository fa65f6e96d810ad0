// The applications of the stack: objects that issue session requests and receive what comes of
// them.  Requests may be made on any thread; callbacks are run on the protocol thread, one at a
// time, and none after closeClientPort().
#ifndef MMSBRIX_WAPSTACK_WSP_APPLICATION_H
#define MMSBRIX_WAPSTACK_WSP_APPLICATION_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "wapstack/apidrvvtask.h"
#include "wapstack/wsp_client.h"

namespace WapStack {

class ClientPort;

using mmsbrix::ApiDriverTask;
using mmsbrix::Octets;
using mmsbrix::WdpAddress;
using Agreement = mmsbrix::session::Agreement;
using Capabilities = mmsbrix::session::Capabilities;
using TransactionId = mmsbrix::session::Id;
/// Timers and counters of the port; the size of packets is the stack's.
using TransactionSettings = mmsbrix::wtp::Settings;

/// An object with a port of its own.
class WapApplication {
 public:
  explicit WapApplication(ApiDriverTask& task) : task_(task) {}
  WapApplication(const WapApplication&) = delete;
  WapApplication& operator=(const WapApplication&) = delete;
  virtual ~WapApplication() = default;

 protected:
  ApiDriverTask& task_;
};

/// The user of a client session.
class WspClientApplication : public WapApplication {
 public:
  using WapApplication::WapApplication;
  /// Derived classes close the port: a callback must not find half an object.
  ~WspClientApplication() override;

  /// Creates the port at which server ports of this type are addressed, at `local`, whose port 0
  /// takes a free one.  The address that was bound, or nothing, with `error` set.
  std::optional<WdpAddress> createClientPort(std::uint16_t portType, const WdpAddress& local,
                                             const TransactionSettings& settings,
                                             std::error_code& error);
  /// Closes it and waits until no callback runs any more.
  void closeClientPort() noexcept;

  // Requests.  Each ends by a callback: one that the session cannot take by the abort of its method
  // or by the end of the session, also when the stack does not run.
  void s_Connect_req(const WdpAddress& server, std::vector<std::uint8_t> headers,
                     const Capabilities& capabilities);
  /// `reason` is what the callback tells when there is no session; the PDU carries none.
  void s_Disconnect_req(std::uint8_t reason);
  void s_Suspend_req();
  void s_Resume_req(const WdpAddress& server, std::vector<std::uint8_t> headers);
  struct MethodArguments {
    std::string uri;
    std::string contentType;            ///< "" for methods without a body
    std::vector<std::uint8_t> headers;  ///< encoded, without the content type
    std::shared_ptr<const std::vector<std::uint8_t>> body;
  };
  void s_MethodInvoke_req(TransactionId id, std::uint8_t method, MethodArguments arguments);
  void s_MethodResult_res(TransactionId id);
  void s_MethodAbort_req(TransactionId id);
  void s_ConfirmedPush_res(TransactionId id);
  void s_PushAbort_req(TransactionId id, std::uint8_t reason);

 protected:
  friend class ClientPort;

  virtual void s_Connect_cnf(Octets headers, const Agreement& agreement);
  virtual void s_Exception_ind(std::uint8_t reason);
  /// The end of the session, whoever asked for it.  `headers` begin with a content type where a
  /// `body` says why.
  virtual void s_Disconnect_ind(std::uint8_t reason, const std::vector<WdpAddress>& redirect,
                                Octets headers, Octets body);
  virtual void s_MethodInvoke_cnf(TransactionId id);
  /// `headers` begin with the content type.
  virtual void s_MethodResult_ind(TransactionId id, std::uint8_t status, Octets headers,
                                  Octets body);
  virtual void s_MethodAbort_ind(TransactionId id, std::uint8_t reason);
  virtual void s_Suspend_ind(std::uint8_t reason);
  virtual void s_Resume_cnf(Octets headers);
  /// The result of a method without session.
  virtual void s_Unit_MethodResult_ind(TransactionId id, std::uint8_t status, Octets headers,
                                       Octets body);
  /// The address in use: of the server that the session is with or is to be with.
  [[nodiscard]] virtual const WdpAddress& serverAddress() const = 0;
  virtual void s_Push_ind(Octets headers, Octets body);
  /// Answered by s_ConfirmedPush_res or s_PushAbort_req; unless overridden, refused.
  virtual void s_ConfirmedPush_ind(TransactionId id, Octets headers, Octets body);
  virtual void s_PushAbort_ind(TransactionId id, std::uint8_t reason);

 private:
  template <typename Job>
  bool request(Job job);

  std::shared_ptr<ClientPort> port_;
};

}  // namespace WapStack

#endif  // MMSBRIX_WAPSTACK_WSP_APPLICATION_H
