// The state tables of a WSP client as data: the session, a method, a confirmed push.  An event that
// no row takes is ignored.  [WAP-230 7.1.4, without large data transfer]
#ifndef MMSBRIX_WAPSTACK_WSP_TABLES_H
#define MMSBRIX_WAPSTACK_WSP_TABLES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "wapstack/state_table.h"

namespace mmsbrix::session {

enum class State : std::uint8_t {
  null,
  // of a session
  connecting,
  connected,
  suspended,
  resuming,
  // of a method
  requesting,
  waiting,
  completing,
  // of a confirmed push
  receiving,
};

enum class Trigger : std::uint8_t {
  connectRequest,
  disconnectRequest,
  suspendRequest,
  resumeRequest,
  methodRequest,
  methodAbortRequest,
  resultResponse,
  pushResponse,
  pushAbortRequest,
  rcvConnectReply,
  rcvRedirect,
  rcvReply,
  rcvTooLarge,  ///< a result above the size that was agreed on
  rcvOther,     ///< a result that is no answer to what was asked
  rcvDisconnect,
  rcvPush,
  rcvConfirmedPush,
  rcvBadInvoke,   ///< a class 0 invoke with nothing that is known
  rcvBadRequest,  ///< the same of class 1
  trConfirm,      ///< TR-Invoke.cnf
  trAbort,
  peerSuspended,  ///< a method's transaction was aborted with SUSPEND
  peerLeft,       ///< the same with DISCONNECT
};

/// Reason codes of aborts and disconnections.  [WAP-230 table 35]
enum class Reason : std::uint8_t {
  fromEvent = 0,  ///< in a table: the one that the event carries
  movedPermanently = 0x31,
  movedTemporarily = 0x32,
  protocolError = 0xE0,
  disconnect = 0xE1,
  suspend = 0xE2,
  resume = 0xE3,
  congestion = 0xE4,
  connectError = 0xE5,
  mruExceeded = 0xE6,
  morExceeded = 0xE7,
  peerRequest = 0xE8,
  networkError = 0xE9,
  userRequest = 0xEA,
};

namespace fact {
using Set = std::uint16_t;
inline constexpr Set kAgreed = 1u << 0;  ///< the server's capabilities are acceptable
inline constexpr Set kOk = 1u << 1;      ///< a Reply with status 200
inline constexpr Set kPush = 1u << 2;    ///< facilities of the session
inline constexpr Set kConfirmedPush = 1u << 3;
inline constexpr Set kResume = 1u << 4;
inline constexpr Set kPushRoom = 1u << 5;      ///< fewer confirmed pushes open than agreed
inline constexpr Set kDisconnected = 1u << 6;  ///< the abort's reason is DISCONNECT
inline constexpr Set kUnconnected = 1u << 7;   ///< the session waits for its ConnectReply
}  // namespace fact

namespace act {
using Set = std::uint32_t;
inline constexpr Set kInvokeConnect = 1u << 0;
inline constexpr Set kInvokeResume = 1u << 1;
inline constexpr Set kInvokeMethod = 1u << 2;
inline constexpr Set kRespond = 1u << 3;   ///< TR-Result.res, of a push TR-Invoke.res
inline constexpr Set kAbort = 1u << 4;     ///< TR-Abort of the transaction, with the row's reason
inline constexpr Set kAbortAll = 1u << 5;  ///< methods and pushes, with the row's reason
inline constexpr Set kSendDisconnect = 1u << 6;
inline constexpr Set kSendSuspend = 1u << 7;
inline constexpr Set kConfirm = 1u << 8;  ///< of the connect, resume or method invoke
inline constexpr Set kIndicateDisconnect = 1u << 9;
inline constexpr Set kIndicateSuspend = 1u << 10;
inline constexpr Set kIndicateException = 1u << 11;
inline constexpr Set kIndicateResult = 1u << 12;
inline constexpr Set kIndicateAbort = 1u << 13;
inline constexpr Set kIndicatePush = 1u << 14;
}  // namespace act

struct Row {
  State state;
  Trigger trigger;
  fact::Set with;
  fact::Set without;
  act::Set actions;
  Reason abort;  ///< what peers are told
  Reason say;    ///< what the user is told
  State next;
};

[[nodiscard]] std::span<const Row> sessionTable() noexcept;
[[nodiscard]] std::span<const Row> methodTable() noexcept;
[[nodiscard]] std::span<const Row> pushTable() noexcept;

/// How often each row was taken, for tests that want every one to be.
struct RowCounts {
  static constexpr std::size_t kMaxRows = 64;
  std::array<std::uint32_t, kMaxRows> session{};
  std::array<std::uint32_t, kMaxRows> method{};
  std::array<std::uint32_t, kMaxRows> push{};
};

}  // namespace mmsbrix::session

#endif  // MMSBRIX_WAPSTACK_WSP_TABLES_H
