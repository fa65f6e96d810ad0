// The state tables of a WTP transaction as data: what the initiator and the responder do on each
// event in each state, with the rows for packet groups beside the standard's.  An event that no row
// takes is ignored.  [WAP-224 9.4, 9.5, 7.14]
#ifndef MMSBRIX_WAPSTACK_WTP_TABLES_H
#define MMSBRIX_WAPSTACK_WTP_TABLES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "wapstack/state_table.h"

namespace mmsbrix::wtp {

/// The standard's states of both sides, the initiator's NULL and the responder's LISTEN being
/// `null`, and two for messages of several packets: `groupWait` while the Ack of a group that is
/// not the last is awaited, `receiving` while a message is being put together.  An invoke is `held`
/// until the peer has verified a TID that was marked as new.
enum class State : std::uint8_t {
  null,
  groupWait,
  resultWait,
  receiving,
  resultRespWait,
  tidOkWait,
  invokeRespWait,
  waitTimeout,
  held,
};

enum class Trigger : std::uint8_t {
  invokeRequest,
  invokeResponse,
  resultRequest,
  resultResponse,
  abortRequest,
  rcvInvoke,  ///< or a segmented invoke
  rcvResult,  ///< or a segmented result
  rcvAck,
  rcvNack,
  rcvAbort,
  rcvError,  ///< a broken PDU of this transaction
  retryTimer,
  ackTimer,
  waitTimer,
  delayTimer,  ///< the peer asked for a pause before this group
  nackTimer,
  released,  ///< the verification that an invoke was held for is over
  limit,     ///< silence, or the whole took too long
};

/// What a row may ask about; a set of bits.
namespace fact {
using Set = std::uint32_t;
inline constexpr Set kClass0 = 1u << 0;
inline constexpr Set kClass1 = 1u << 1;
inline constexpr Set kClass2 = 1u << 2;
inline constexpr Set kNextEnds = 1u << 3;     ///< the group to be sent next is the last
inline constexpr Set kAcks = 1u << 4;         ///< the Ack is for the group that is outstanding
inline constexpr Set kListed = 1u << 5;       ///< the negative Ack is for that group
inline constexpr Set kTve = 1u << 6;          ///< Tve, in the initiator's Acks Tok
inline constexpr Set kResent = 1u << 7;       ///< RID of what was received
inline constexpr Set kRetriesLeft = 1u << 8;  ///< RCR < RCR_MAX
inline constexpr Set kAecLeft = 1u << 9;      ///< AEC < AEC_MAX
inline constexpr Set kUserAck = 1u << 10;     ///< the user acknowledges (U/P)
inline constexpr Set kHoldOn = 1u << 11;      ///< a hold-on Ack was received
inline constexpr Set kAckSent = 1u << 12;     ///< a hold-on Ack was sent
inline constexpr Set kTokSent = 1u << 13;
inline constexpr Set kSegmented = 1u << 14;   ///< our message takes several packets
inline constexpr Set kRetryWhole = 1u << 15;  ///< the abort says that only segments were the fault
inline constexpr Set kTidBad = 1u << 16;      ///< the TID must be verified and is not yet
inline constexpr Set kStored = 1u << 17;      ///< the message: a packet was kept
inline constexpr Set kHole = 1u << 18;        ///< packets before a group end are missing
inline constexpr Set kGroupDone = 1u << 19;   ///< a group is complete
inline constexpr Set kRepeated = 1u << 20;    ///< the end of a complete group came again
inline constexpr Set kComplete = 1u << 21;    ///< it is all there
inline constexpr Set kTooLarge = 1u << 22;    ///< it is above our limit
inline constexpr Set kWrongVersion = 1u << 23;  ///< of an invoke
inline constexpr Set kNoClass = 1u << 24;       ///< an invoke of the reserved class
inline constexpr Set kNoClass2 = 1u << 25;      ///< an invoke of class 2, which is not served here
inline constexpr Set kNoSegments = 1u << 26;    ///< one packet of several, which is not served here
inline constexpr Set kHeldBack = 1u << 27;      ///< our invoke must not go out yet
inline constexpr Set kStoodBy = 1u << 28;       ///< a Tok was sent for this TID
}  // namespace fact

/// What a row does; a set of bits, carried out in the order of the bits.
namespace act {
using Set = std::uint32_t;
inline constexpr Set kCountRetry = 1u << 0;
inline constexpr Set kCountAec = 1u << 1;
inline constexpr Set kSetHoldOn = 1u << 2;
inline constexpr Set kVerified = 1u << 3;
inline constexpr Set kRestartWhole = 1u << 4;  ///< a new TID and the whole message in one packet
inline constexpr Set kSendTok = 1u << 5;
inline constexpr Set kSendTve = 1u << 6;
inline constexpr Set kSendGroup = 1u << 7;   ///< the next one; RCR starts anew
inline constexpr Set kResendLast = 1u << 8;  ///< the packet that ends the group
inline constexpr Set kResendListed = 1u << 9;
inline constexpr Set kSendAck = 1u << 10;
inline constexpr Set kResendAck = 1u << 11;
inline constexpr Set kAckGroup = 1u << 12;
inline constexpr Set kSendNack = 1u << 13;
inline constexpr Set kSendAbort = 1u << 14;  ///< with the reason that the trigger stands for
inline constexpr Set kConfirmInvoke = 1u << 15;
inline constexpr Set kIndicateInvoke = 1u << 16;
inline constexpr Set kIndicateResult = 1u << 17;
inline constexpr Set kConfirmResult = 1u << 18;
inline constexpr Set kIndicateAbort = 1u << 19;
inline constexpr Set kStartRetry = 1u << 20;
inline constexpr Set kStartAck = 1u << 21;
inline constexpr Set kStartWait = 1u << 22;
inline constexpr Set kStartSilence = 1u << 23;
inline constexpr Set kStartNack = 1u << 24;
}  // namespace act

struct Row {
  State state;
  Trigger trigger;
  fact::Set with;     ///< facts that must hold
  fact::Set without;  ///< facts that must not
  act::Set actions;
  State next;
};

[[nodiscard]] std::span<const Row> initiatorTable() noexcept;
[[nodiscard]] std::span<const Row> responderTable() noexcept;

/// How often each row was taken, for tests that want every one to be.
struct RowCounts {
  static constexpr std::size_t kMaxRows = 128;
  std::array<std::uint32_t, kMaxRows> initiator{};
  std::array<std::uint32_t, kMaxRows> responder{};
};

}  // namespace mmsbrix::wtp

#endif  // MMSBRIX_WAPSTACK_WTP_TABLES_H
