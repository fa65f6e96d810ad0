// The WSP client: one connection-mode session with a server, over WTP.  Like the endpoint below it,
// it owns no socket, clock or thread: datagrams and the time are handed in, datagrams and events
// are fetched until there are none, onTimer() is called at deadline().  Header blocks are octets
// that it passes on.  [WAP-230 7.1]
#ifndef MMSBRIX_WAPSTACK_WSP_CLIENT_H
#define MMSBRIX_WAPSTACK_WSP_CLIENT_H

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "wapstack/wsp_capabilities.h"
#include "wapstack/wsp_pdu.h"
#include "wapstack/wsp_tables.h"
#include "wapstack/wtp.h"

namespace mmsbrix::session {

using wtp::TimePoint;
/// Names a method, by the user's choice, or a confirmed push, by ours.
using Id = std::uint32_t;

/// A service primitive towards the user.
struct Event {
  enum class Kind : std::uint8_t {
    connectConfirm,
    disconnectIndication,  ///< the session is over; also the answer to disconnect()
    suspendIndication,
    resumeConfirm,
    exceptionIndication,
    methodInvokeConfirm,
    methodResultIndication,
    methodAbortIndication,
    pushIndication,
    confirmedPushIndication,
    pushAbortIndication,
  };
  Kind kind{};
  Id id = 0;              ///< of methods and confirmed pushes
  std::uint8_t code = 0;  ///< a status below 0x80, a Reason from 0xE0 on
  Agreement agreement;    ///< of a connect
  std::vector<WdpAddress> redirect;
  std::vector<std::uint8_t> headers;  ///< with the content type in front where there is a body
  std::vector<std::uint8_t> body;
};

/// Why a request could not be taken.
enum class Refusal : std::uint8_t {
  none,
  wrongState,
  tooManyMethods,    ///< as many are open as was agreed
  largerThanAgreed,  ///< the PDU is above the server's SDU size
  cannotBeSent,      ///< it takes more than 256 packets
  tooManyTransactions,
  unknownMethod,      ///< neither the standard's nor agreed on
  ackHeadersTooLong,  ///< acknowledgement headers above 255 octets
};
[[nodiscard]] const char* refusalText(Refusal refusal) noexcept;

class Client {
 public:
  Client(const wtp::Settings& settings, std::uint16_t firstTid);

  /// S-Connect.req; ends in a connectConfirm or a disconnectIndication.
  Refusal connect(const WdpAddress& server, const Capabilities& capabilities, Octets headers,
                  TimePoint now);
  Refusal disconnect(TimePoint now);
  /// S-Suspend.req, where the server agreed to sessions that resume.
  Refusal suspend(TimePoint now);
  /// S-Resume.req, at the server's old address or, when ours changed, at another.
  Refusal resume(const WdpAddress& server, Octets headers, TimePoint now);
  /// S-MethodInvoke.req.  `headers` begin with the content type for methods with a body.
  Refusal invokeMethod(Id id, std::uint8_t method, std::string_view uri, Octets headers,
                       Octets body, TimePoint now);
  /// S-MethodResult.res; a method counts as open until this.  Acknowledgement headers go out where
  /// the server agreed to have them, here and for pushes.
  Refusal respondResult(Id id, Octets ackHeaders, TimePoint now);
  Refusal abortMethod(Id id, TimePoint now);
  Refusal respondPush(Id id, Octets ackHeaders, TimePoint now);
  /// `reason`: 0xEB refused, 0xEC to be delivered later, 0xED no resources, 0xEE content type.
  Refusal abortPush(Id id, std::uint8_t reason, TimePoint now);

  void receive(const WdpAddress& peer, Octets datagram, TimePoint now);
  void onTimer(TimePoint now);
  [[nodiscard]] std::optional<TimePoint> deadline() const { return wtp_.deadline(); }
  std::optional<Event> takeEvent();
  std::optional<wtp::Datagram> takeDatagram() { return wtp_.takeDatagram(); }

  [[nodiscard]] State state() const noexcept { return state_; }
  [[nodiscard]] std::size_t transactions() const noexcept { return wtp_.transactions(); }
  void countRows(RowCounts* counts) noexcept { counts_ = counts; }

 private:
  struct Exchange {  ///< a method or a confirmed push
    State state = State::null;
    wtp::Handle handle = 0;
  };
  using Exchanges = std::map<Id, Exchange>;
  /// What belongs to the event that a table is asked about.
  struct Occasion {
    wtp::Handle handle = 0;
    const ServerPdu* pdu = nullptr;
    std::uint8_t code = 0;
    Octets octets{};
    TimePoint now{};
  };

  bool step(Trigger trigger, fact::Set facts, const Occasion& occasion);
  bool stepMethod(Exchanges::iterator method, Trigger trigger, const Occasion& occasion);
  bool stepPush(Exchanges::iterator push, Trigger trigger, const Occasion& occasion);
  void act(const Row& row, const Occasion& occasion);
  void tell(const Row& row, Trigger trigger, const Occasion& occasion);
  void abortAll(Reason reason, TimePoint now);
  void invokeSession(Octets pdu, TimePoint now);
  [[nodiscard]] bool mayInvoke(std::uint8_t method) const noexcept;
  [[nodiscard]] Octets agreedAckHeaders(Octets ackHeaders) const noexcept;
  void sendUnreliable(PduType type, TimePoint now);
  Event& say(Event::Kind kind, std::uint8_t code);

  void pump(TimePoint now);
  void handle(const wtp::Event& event, TimePoint now);
  void handleInvoke(const wtp::Event& event, TimePoint now);
  void handleResult(const wtp::Event& event, TimePoint now);
  void handleAbort(const wtp::Event& event, TimePoint now);
  [[nodiscard]] fact::Set facilities() const noexcept;
  [[nodiscard]] bool tooLarge(std::size_t octets) const noexcept;
  static Exchanges::iterator find(Exchanges& among, wtp::Handle handle);

  wtp::Endpoint wtp_;
  State state_ = State::null;
  WdpAddress server_;
  Capabilities proposed_;
  Agreement agreement_;
  std::uint32_t sessionId_ = 0;
  wtp::Handle transaction_ = 0;  // of the Connect or Resume that is under way
  std::vector<std::uint8_t> headers_;
  Exchanges methods_;
  Exchanges pushes_;
  Id lastPush_ = 0;
  std::deque<Event> events_;
  RowCounts* counts_ = nullptr;
};

}  // namespace mmsbrix::session

#endif  // MMSBRIX_WAPSTACK_WSP_CLIENT_H
