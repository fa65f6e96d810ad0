#include "wapstack/wtp_tables.h"

namespace mmsbrix::wtp {
namespace {

using namespace fact;
using namespace act;
using S = State;
using T = Trigger;

constexpr act::Set kGiveUp = kSendAbort | kIndicateAbort;
constexpr act::Set kSend = kSendGroup | kStartRetry;
constexpr act::Set kRetry = kCountRetry | kResendLast | kStartRetry;
/// The invoke is confirmed by its result unless a hold-on Ack did so before; kConfirmInvoke looks.
constexpr act::Set kResultBegins = kConfirmInvoke | kSetHoldOn;

// clang-format off
constexpr auto kInitiator = std::to_array<Row>({
    // NULL
    {S::null, T::invokeRequest, kClass0, 0, kSendGroup, S::null},
    {S::null, T::invokeRequest, kHeldBack, 0, 0, S::held},
    {S::null, T::invokeRequest, kNextEnds, 0, kSend, S::resultWait},
    {S::null, T::invokeRequest, 0, 0, kSend, S::groupWait},

    // Held back: nothing of it is on its way yet.  What it waits for has a limit of its own.
    {S::held, T::released, kNextEnds, 0, kSend, S::resultWait},
    {S::held, T::released, 0, kNextEnds, kSend, S::groupWait},
    {S::held, T::abortRequest, 0, 0, 0, S::null},

    // A group that is not the last awaits its Ack.  With a Tve the Ack counts for the group too.
    {S::groupWait, T::rcvAck, kTve | kAcks | kNextEnds, 0, kSendTok | kSend, S::resultWait},
    {S::groupWait, T::rcvAck, kTve | kAcks, 0, kSendTok | kSend, S::groupWait},
    {S::groupWait, T::rcvAck, kTve | kRetriesLeft, 0, kCountRetry | kSendTok | kStartRetry, S::groupWait},
    {S::groupWait, T::rcvAck, kAcks | kNextEnds, kTve, kSend, S::resultWait},
    {S::groupWait, T::rcvAck, kAcks, kTve, kSend, S::groupWait},
    {S::groupWait, T::rcvNack, kListed, 0, kResendListed | kStartRetry, S::groupWait},
    {S::groupWait, T::delayTimer, 0, 0, kSend, S::groupWait},
    {S::groupWait, T::retryTimer, kRetriesLeft | kTokSent, 0, kSendTok | kRetry, S::groupWait},
    {S::groupWait, T::retryTimer, kRetriesLeft, kTokSent, kRetry, S::groupWait},
    {S::groupWait, T::retryTimer, 0, kRetriesLeft, kIndicateAbort, S::null},
    {S::groupWait, T::rcvAbort, kRetryWhole, 0, kRestartWhole | kSend, S::resultWait},
    {S::groupWait, T::rcvAbort, 0, kRetryWhole, kIndicateAbort, S::null},
    {S::groupWait, T::abortRequest, 0, 0, kSendAbort, S::null},
    {S::groupWait, T::rcvError, 0, 0, kGiveUp, S::null},
    {S::groupWait, T::limit, 0, 0, kGiveUp, S::null},

    // RESULT WAIT, for class 1 the wait for the Ack
    // A Tve behind a hold-on Ack is a late copy: it must not start the retries anew.
    {S::resultWait, T::rcvAck, kTve | kHoldOn, 0, kSendTok | kStartSilence, S::resultWait},
    {S::resultWait, T::rcvAck, kTve | kRetriesLeft, 0, kCountRetry | kSendTok | kStartRetry, S::resultWait},
    {S::resultWait, T::rcvAck, kClass1 | kAcks, kTve, kConfirmInvoke, S::null},
    {S::resultWait, T::rcvAck, kClass2 | kAcks, kTve | kHoldOn, kConfirmInvoke | kSetHoldOn | kStartSilence, S::resultWait},
    {S::resultWait, T::rcvAck, kClass2 | kHoldOn, kTve, kStartSilence, S::resultWait},
    {S::resultWait, T::rcvNack, kListed, 0, kResendListed | kStartRetry, S::resultWait},
    {S::resultWait, T::rcvResult, kClass2 | kComplete, 0, kResultBegins | kIndicateResult | kStartAck, S::resultRespWait},
    {S::resultWait, T::rcvResult, kClass2 | kTooLarge, 0, kGiveUp, S::null},
    {S::resultWait, T::rcvResult, kClass2 | kGroupDone, 0, kResultBegins | kAckGroup | kStartSilence, S::receiving},
    {S::resultWait, T::rcvResult, kClass2 | kHole, 0, kResultBegins | kStartNack | kStartSilence, S::receiving},
    {S::resultWait, T::rcvResult, kClass2 | kStored, 0, kResultBegins | kStartSilence, S::receiving},
    {S::resultWait, T::delayTimer, 0, 0, kSend, S::resultWait},
    {S::resultWait, T::retryTimer, kRetriesLeft | kTokSent | kSegmented, 0, kSendTok | kRetry, S::resultWait},
    {S::resultWait, T::retryTimer, kRetriesLeft | kTokSent, kSegmented, kCountRetry | kSendTok | kStartRetry, S::resultWait},
    {S::resultWait, T::retryTimer, kRetriesLeft, kTokSent, kRetry, S::resultWait},
    {S::resultWait, T::retryTimer, 0, kRetriesLeft, kIndicateAbort, S::null},
    {S::resultWait, T::rcvAbort, kRetryWhole, 0, kRestartWhole | kSend, S::resultWait},
    {S::resultWait, T::rcvAbort, 0, kRetryWhole, kIndicateAbort, S::null},
    {S::resultWait, T::abortRequest, 0, 0, kSendAbort, S::null},
    {S::resultWait, T::rcvError, 0, 0, kGiveUp, S::null},
    {S::resultWait, T::limit, 0, 0, kGiveUp, S::null},

    // A result of several packets arrives
    {S::receiving, T::rcvResult, kComplete, 0, kIndicateResult | kStartAck, S::resultRespWait},
    {S::receiving, T::rcvResult, kTooLarge, 0, kGiveUp, S::null},
    {S::receiving, T::rcvResult, kGroupDone, 0, kAckGroup | kStartSilence, S::receiving},
    {S::receiving, T::rcvResult, kRepeated, 0, kAckGroup | kStartSilence, S::receiving},
    {S::receiving, T::rcvResult, kHole, 0, kStartNack | kStartSilence, S::receiving},
    {S::receiving, T::rcvResult, kStored, 0, kStartSilence, S::receiving},
    {S::receiving, T::nackTimer, 0, 0, kSendNack, S::receiving},
    {S::receiving, T::rcvAbort, 0, 0, kIndicateAbort, S::null},
    {S::receiving, T::abortRequest, 0, 0, kSendAbort, S::null},
    {S::receiving, T::rcvError, 0, 0, kGiveUp, S::null},
    {S::receiving, T::limit, 0, 0, kGiveUp, S::null},

    // RESULT RESP WAIT
    {S::resultRespWait, T::resultResponse, 0, 0, kSendAck | kStartWait, S::waitTimeout},
    {S::resultRespWait, T::ackTimer, 0, kUserAck, kSendAck | kStartWait, S::waitTimeout},
    {S::resultRespWait, T::ackTimer, kUserAck | kAecLeft, 0, kCountAec | kStartAck, S::resultRespWait},
    {S::resultRespWait, T::ackTimer, kUserAck, kAecLeft, kGiveUp, S::null},
    {S::resultRespWait, T::rcvAbort, 0, 0, kIndicateAbort, S::null},
    {S::resultRespWait, T::abortRequest, 0, 0, kSendAbort, S::null},
    {S::resultRespWait, T::rcvError, 0, 0, kGiveUp, S::null},

    // WAIT TIMEOUT.  A Tve now asks about a finished transaction: a Tok would run it again.  Where one
    // was sent before, it is a late copy, and an Abort would end what the peer has just served.
    {S::waitTimeout, T::rcvResult, kResent, 0, kResendAck, S::waitTimeout},
    {S::waitTimeout, T::rcvAck, kTve, kStoodBy, kSendAbort, S::waitTimeout},
    {S::waitTimeout, T::rcvAbort, 0, 0, kIndicateAbort, S::null},
    {S::waitTimeout, T::abortRequest, 0, 0, kSendAbort, S::null},
    {S::waitTimeout, T::waitTimer, 0, 0, 0, S::null},
});

constexpr auto kResponder = std::to_array<Row>({
    // LISTEN
    {S::null, T::rcvInvoke, kWrongVersion, 0, kSendAbort, S::null},
    {S::null, T::rcvInvoke, kNoClass, 0, kSendAbort, S::null},
    {S::null, T::rcvInvoke, kNoClass2, 0, kSendAbort, S::null},
    {S::null, T::rcvInvoke, kClass0 | kComplete, 0, kIndicateInvoke, S::null},
    {S::null, T::rcvInvoke, kNoSegments, kClass0, kSendAbort, S::null},
    {S::null, T::rcvInvoke, kTooLarge, kClass0, kSendAbort, S::null},
    {S::null, T::rcvInvoke, kComplete | kTidBad, kClass0, kSendTve | kStartSilence, S::tidOkWait},
    {S::null, T::rcvInvoke, kComplete, kClass0 | kTidBad, kIndicateInvoke | kStartAck, S::invokeRespWait},
    {S::null, T::rcvInvoke, kGroupDone | kTidBad, kClass0, kSendTve | kStartSilence, S::tidOkWait},
    {S::null, T::rcvInvoke, kGroupDone, kClass0 | kTidBad, kAckGroup | kStartSilence, S::receiving},
    {S::null, T::rcvInvoke, kStored, kClass0, kStartSilence, S::receiving},
    {S::null, T::rcvError, 0, 0, kSendAbort, S::null},

    // An invoke of several packets arrives
    {S::receiving, T::rcvInvoke, kComplete | kTidBad, 0, kSendTve | kStartSilence, S::tidOkWait},
    {S::receiving, T::rcvInvoke, kComplete, kTidBad, kIndicateInvoke | kStartAck, S::invokeRespWait},
    {S::receiving, T::rcvInvoke, kTooLarge, 0, kSendAbort, S::null},
    {S::receiving, T::rcvInvoke, kGroupDone | kTidBad, 0, kSendTve | kStartSilence, S::tidOkWait},
    {S::receiving, T::rcvInvoke, kGroupDone, kTidBad, kAckGroup | kStartSilence, S::receiving},
    {S::receiving, T::rcvInvoke, kRepeated, 0, kAckGroup | kStartSilence, S::receiving},
    {S::receiving, T::rcvInvoke, kHole, 0, kStartNack | kStartSilence, S::receiving},
    {S::receiving, T::rcvInvoke, kStored, 0, kStartSilence, S::receiving},
    {S::receiving, T::nackTimer, 0, 0, kSendNack, S::receiving},
    {S::receiving, T::rcvAbort, 0, 0, 0, S::null},
    {S::receiving, T::rcvError, 0, 0, kSendAbort, S::null},
    {S::receiving, T::limit, 0, 0, kSendAbort, S::null},

    // TIDOK WAIT.  Packets of the next group are kept meanwhile.
    {S::tidOkWait, T::rcvAck, kTve | kComplete, 0, kVerified | kIndicateInvoke | kStartAck, S::invokeRespWait},
    {S::tidOkWait, T::rcvAck, kTve, kComplete, kVerified | kStartSilence, S::receiving},
    {S::tidOkWait, T::rcvInvoke, kTooLarge, 0, kSendAbort, S::null},
    {S::tidOkWait, T::rcvInvoke, kResent, 0, kSendTve, S::tidOkWait},
    {S::tidOkWait, T::rcvAbort, 0, 0, 0, S::null},
    {S::tidOkWait, T::rcvError, 0, 0, kSendAbort, S::null},
    {S::tidOkWait, T::limit, 0, 0, 0, S::null},

    // INVOKE RESP WAIT
    {S::invokeRespWait, T::invokeResponse, kClass1, 0, kSendAck | kStartWait, S::waitTimeout},
    {S::invokeRespWait, T::invokeResponse, kClass2, 0, kStartAck, S::resultWait},
    {S::invokeRespWait, T::resultRequest, kClass2 | kNextEnds, 0, kSend, S::resultRespWait},
    {S::invokeRespWait, T::resultRequest, kClass2, 0, kSend, S::groupWait},
    {S::invokeRespWait, T::ackTimer, kClass1, kUserAck, kSendAck | kStartWait, S::waitTimeout},
    {S::invokeRespWait, T::ackTimer, kClass2, kUserAck, kSendAck, S::resultWait},
    {S::invokeRespWait, T::ackTimer, kUserAck | kAecLeft, 0, kCountAec | kStartAck, S::invokeRespWait},
    {S::invokeRespWait, T::ackTimer, kUserAck, kAecLeft, kGiveUp, S::null},
    {S::invokeRespWait, T::rcvAbort, 0, 0, kIndicateAbort, S::null},
    {S::invokeRespWait, T::abortRequest, 0, 0, kSendAbort, S::null},
    {S::invokeRespWait, T::rcvError, 0, 0, kGiveUp, S::null},

    // RESULT WAIT
    {S::resultWait, T::resultRequest, kNextEnds, 0, kSend, S::resultRespWait},
    {S::resultWait, T::resultRequest, 0, kNextEnds, kSend, S::groupWait},
    {S::resultWait, T::ackTimer, 0, 0, kSendAck, S::resultWait},
    {S::resultWait, T::rcvInvoke, kResent | kAckSent, 0, kResendAck, S::resultWait},
    {S::resultWait, T::rcvAck, kTve | kResent | kAckSent, 0, kResendAck, S::resultWait},
    {S::resultWait, T::rcvAbort, 0, 0, kIndicateAbort, S::null},
    {S::resultWait, T::abortRequest, 0, 0, kSendAbort, S::null},
    {S::resultWait, T::rcvError, 0, 0, kGiveUp, S::null},
    {S::resultWait, T::limit, 0, 0, kGiveUp, S::null},

    // A group of the result that is not its last awaits its Ack
    {S::groupWait, T::rcvAck, kAcks | kNextEnds, kTve, kSend, S::resultRespWait},
    {S::groupWait, T::rcvAck, kAcks, kTve, kSend, S::groupWait},
    {S::groupWait, T::rcvNack, kListed, 0, kResendListed | kStartRetry, S::groupWait},
    {S::groupWait, T::delayTimer, 0, 0, kSend, S::groupWait},
    {S::groupWait, T::retryTimer, kRetriesLeft, 0, kRetry, S::groupWait},
    {S::groupWait, T::retryTimer, 0, kRetriesLeft, kIndicateAbort, S::null},
    {S::groupWait, T::rcvAbort, 0, 0, kIndicateAbort, S::null},
    {S::groupWait, T::abortRequest, 0, 0, kSendAbort, S::null},
    {S::groupWait, T::rcvError, 0, 0, kGiveUp, S::null},
    {S::groupWait, T::limit, 0, 0, kGiveUp, S::null},

    // RESULT RESP WAIT
    {S::resultRespWait, T::rcvAck, kAcks, kTve, kConfirmResult, S::null},
    {S::resultRespWait, T::rcvNack, kListed, 0, kResendListed | kStartRetry, S::resultRespWait},
    {S::resultRespWait, T::delayTimer, 0, 0, kSend, S::resultRespWait},
    {S::resultRespWait, T::retryTimer, kRetriesLeft, 0, kRetry, S::resultRespWait},
    {S::resultRespWait, T::retryTimer, 0, kRetriesLeft, kIndicateAbort, S::null},
    {S::resultRespWait, T::rcvAbort, 0, 0, kIndicateAbort, S::null},
    {S::resultRespWait, T::abortRequest, 0, 0, kSendAbort, S::null},
    {S::resultRespWait, T::rcvError, 0, 0, kGiveUp, S::null},
    {S::resultRespWait, T::limit, 0, 0, kGiveUp, S::null},

    // WAIT TIMEOUT, class 1
    {S::waitTimeout, T::rcvInvoke, kResent, 0, kResendAck, S::waitTimeout},
    {S::waitTimeout, T::rcvAck, kTve | kResent, 0, kResendAck, S::waitTimeout},
    {S::waitTimeout, T::rcvAbort, 0, 0, kIndicateAbort, S::null},
    {S::waitTimeout, T::abortRequest, 0, 0, kSendAbort, S::null},
    {S::waitTimeout, T::waitTimer, 0, 0, 0, S::null},
});
// clang-format on

static_assert(kInitiator.size() <= RowCounts::kMaxRows);
static_assert(kResponder.size() <= RowCounts::kMaxRows);

}  // namespace

std::span<const Row> initiatorTable() noexcept {
  return kInitiator;
}
std::span<const Row> responderTable() noexcept {
  return kResponder;
}

}  // namespace mmsbrix::wtp
