// The WSP server: connection-mode sessions with any number of clients, over WTP.  Like the client,
// it owns no socket, clock or thread: datagrams and the time are handed in, datagrams and events
// are fetched until there are none, onTimer() is called at deadline().  Header blocks are octets
// that it passes on.  [WAP-230 7.1]
#ifndef MMSBRIX_WAPSTACK_WSP_SERVER_H
#define MMSBRIX_WAPSTACK_WSP_SERVER_H

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "wapstack/wsp_capabilities.h"
#include "wapstack/wsp_pdu.h"
#include "wapstack/wsp_tables.h"
#include "wapstack/wtp.h"

namespace mmsbrix::session {

using wtp::TimePoint;
using SessionId = std::uint32_t;

/// A service primitive towards the server's user.  Every method and every confirmed push ends by
/// its confirm or its abort, whoever aborts it and also when the session ends.  That the user ends
/// a session itself is not indicated.
struct ServerEvent {
  enum class Kind : std::uint8_t {
    connectIndication,     ///< to be answered by accept, refuse, redirect or disconnect
    disconnectIndication,  ///< the session is over
    suspendIndication,
    resumeIndication,  ///< to be answered by accept, refuse or disconnect
    methodIndication,  ///< to be answered by reply or abortMethod
    methodConfirm,     ///< the client has the reply
    methodAbortIndication,
    pushConfirm,  ///< the client took the confirmed push
    pushAbortIndication,
  };
  Kind kind{};
  SessionId session = 0;
  wtp::Handle id = 0;                   ///< of methods and confirmed pushes
  std::uint8_t code = 0;                ///< the Reason of disconnections, suspensions and aborts
  std::uint8_t method = 0;              ///< type of the method's PDU, 0x60 for Post
  WdpAddress peer;                      ///< of connect, resume and method
  Capabilities proposed{};              ///< of a connect
  std::string uri{};                    ///< of a method
  std::vector<std::uint8_t> headers{};  ///< a Post's with the content type in front; of a confirm,
                                        ///< the client's acknowledgement headers
  std::vector<std::uint8_t> body{};
};

/// Why a request could not be taken.
enum class ServerRefusal : std::uint8_t {
  none,
  wrongState,        ///< no such session, method or push, or one that has no use for this now
  noFacility,        ///< the session has no pushes of this kind
  tooManyPushes,     ///< as many are open as was agreed
  largerThanAgreed,  ///< the PDU is above the client's SDU size
  cannotBeSent,      ///< the transaction layer refuses it: more than 256 packets, or too many open
};
[[nodiscard]] const char* refusalText(ServerRefusal refusal) noexcept;

class Server {
 public:
  /// Sessions at a time; beyond them the oldest ends without a word.
  static constexpr std::size_t kMaxSessions = 4096;
  /// What is granted unless limit() says otherwise: any size, all facilities, 8 methods and pushes.
  static constexpr Agreement kLimits{0, 0, 0xF0, 8, 8};

  Server(const wtp::Settings& settings, std::uint16_t firstTid, SessionId firstSession = 1);

  /// The most that sessions from now on are granted.
  void limit(const Agreement& limits) noexcept { limits_ = limits; }

  /// S-Connect.res or S-Resume.res.  Another session of the same client ends.
  ServerRefusal accept(SessionId session, Octets headers, TimePoint now);
  /// Answers a connect or resume with a status that is not 200; the session is over.
  ServerRefusal refuse(SessionId session, std::uint8_t status, Octets headers, Octets body,
                       TimePoint now);
  /// Answers a connect with other addresses; the session is over.
  ServerRefusal redirect(SessionId session, std::uint8_t flags,
                         std::span<const WdpAddress> addresses, TimePoint now);
  /// S-Disconnect.req.  A connect or resume that has no answer yet is aborted with `reason`.
  ServerRefusal disconnect(SessionId session, Reason reason, TimePoint now);

  /// S-MethodResult.req; `headers` begin with the content type.
  ServerRefusal reply(wtp::Handle method, std::uint8_t status, Octets headers, Octets body,
                      TimePoint now);
  /// S-MethodAbort.req.
  ServerRefusal abortMethod(wtp::Handle method, std::uint8_t reason, TimePoint now);

  /// S-Push.req; nothing tells whether it arrives.
  ServerRefusal push(SessionId session, Octets headers, Octets body, TimePoint now);
  /// S-ConfirmedPush.req; `id` receives its name.
  ServerRefusal confirmedPush(SessionId session, Octets headers, Octets body, wtp::Handle& id,
                              TimePoint now);

  void receive(const WdpAddress& peer, Octets datagram, TimePoint now);
  void onTimer(TimePoint now);
  [[nodiscard]] std::optional<TimePoint> deadline() const { return wtp_.deadline(); }
  std::optional<ServerEvent> takeEvent();
  std::optional<wtp::Datagram> takeDatagram() { return wtp_.takeDatagram(); }

  [[nodiscard]] std::size_t sessions() const noexcept { return sessions_.size(); }
  [[nodiscard]] std::size_t transactions() const noexcept { return wtp_.transactions(); }

 private:
  /// A method that waits until its session is there.
  struct Held {
    wtp::Handle handle = 0;
    std::vector<std::uint8_t> pdu;
  };
  struct Session {
    State state = State::connecting;
    WdpAddress peer;
    wtp::Handle transaction = 0;  ///< of a Connect or Resume, until the client has the answer
    Capabilities proposed;
    std::vector<std::uint8_t> unsupported;  ///< what the ConnectReply says of other capabilities
    Agreement agreement;
    std::vector<Held> held;
    std::set<wtp::Handle> methods;
    std::set<wtp::Handle> pushes;
    std::size_t unanswered = 0;  ///< of the methods
  };
  using Sessions = std::map<SessionId, Session>;
  struct Exchange {
    enum class Kind : std::uint8_t { connect, resume, method, push };
    Kind kind = Kind::connect;
    SessionId session = 0;
    bool answered = false;
  };

  void pump(TimePoint now);
  void handle(const wtp::Event& event, TimePoint now);
  void handleUnreliable(const wtp::Event& event, TimePoint now);
  [[nodiscard]] std::optional<Reason> takeInvoke(const wtp::Event& event, TimePoint now);
  [[nodiscard]] std::optional<Reason> takeConnect(const wtp::Event& event, const ClientPdu& pdu,
                                                  TimePoint now);
  [[nodiscard]] std::optional<Reason> takeResume(const wtp::Event& event, const ClientPdu& pdu,
                                                 TimePoint now);
  [[nodiscard]] std::optional<Reason> takeMethod(SessionId id, wtp::Handle handle, Octets octets);
  void handleAbort(const wtp::Event& event, TimePoint now);
  void confirm(const wtp::Event& event);

  ServerRefusal answer(Sessions::iterator session, Octets pdu, TimePoint now);
  ServerRefusal sendPush(SessionId id, PduType type, Octets headers, Octets body,
                         wtp::Handle& handle, TimePoint now);
  void releaseHeld(SessionId id, TimePoint now);
  ServerRefusal turnAway(Sessions::iterator session, Octets pdu, TimePoint now);
  void suspend(Sessions::iterator session, Reason reason, TimePoint now);
  /// Aborts all that is under way in a session, which then belongs to no peer.
  void close(Sessions::iterator session, Reason reason, TimePoint now);
  /// Ends a session; its client and user hear of it only by what is aborted.
  void drop(Sessions::iterator session, Reason reason, TimePoint now);
  /// Ends a session and tells the user.
  void end(Sessions::iterator session, Reason reason, TimePoint now);
  void forgetExchange(wtp::Handle handle);
  /// The session that a client's next method belongs to: one being opened, else the open one.
  [[nodiscard]] Sessions::iterator sessionOf(const WdpAddress& peer);
  ServerEvent& say(ServerEvent::Kind kind, SessionId session, std::uint8_t code = 0);

  wtp::Endpoint wtp_;
  Agreement limits_ = kLimits;
  SessionId nextSession_;
  Sessions sessions_;
  std::map<WdpAddress, SessionId> opening_;
  std::map<WdpAddress, SessionId> open_;
  std::map<wtp::Handle, Exchange> exchanges_;
  std::deque<ServerEvent> events_;
};

}  // namespace mmsbrix::session

#endif  // MMSBRIX_WAPSTACK_WSP_SERVER_H
