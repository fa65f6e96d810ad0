#include "wapstack/wsp_tables.h"

namespace mmsbrix::session {
namespace {

using namespace fact;
using namespace act;
using S = State;
using T = Trigger;
using R = Reason;

constexpr R kNone = R::fromEvent;
constexpr act::Set kLeave = kAbortAll | kIndicateDisconnect;
constexpr act::Set kPause = kAbortAll | kIndicateSuspend;

// clang-format off
constexpr auto kSessionRows = std::to_array<Row>({
    {S::null, T::connectRequest, 0, 0, kInvokeConnect, kNone, kNone, S::connecting},
    {S::null, T::rcvConfirmedPush, 0, 0, kAbort, R::disconnect, kNone, S::null},
    {S::null, T::rcvBadRequest, 0, 0, kAbort, R::disconnect, kNone, S::null},

    {S::connecting, T::rcvConnectReply, kAgreed, 0, kRespond | kConfirm, kNone, kNone, S::connected},
    {S::connecting, T::rcvConnectReply, 0, kAgreed, kRespond | kSendDisconnect | kLeave, R::connectError, R::protocolError, S::null},
    {S::connecting, T::rcvRedirect, 0, 0, kRespond | kLeave, R::connectError, kNone, S::null},
    {S::connecting, T::rcvReply, 0, 0, kRespond | kLeave, R::connectError, kNone, S::null},
    {S::connecting, T::rcvTooLarge, 0, 0, kAbort | kLeave, R::mruExceeded, R::mruExceeded, S::null},
    {S::connecting, T::rcvOther, 0, 0, kAbort | kLeave, R::protocolError, R::protocolError, S::null},
    {S::connecting, T::trAbort, 0, 0, kLeave, R::connectError, kNone, S::null},
    {S::connecting, T::disconnectRequest, 0, 0, kAbort | kLeave, R::disconnect, R::userRequest, S::null},
    {S::connecting, T::methodRequest, 0, 0, kInvokeMethod, kNone, kNone, S::connecting},
    {S::connecting, T::rcvConfirmedPush, 0, 0, kAbort, R::protocolError, kNone, S::connecting},
    {S::connecting, T::rcvBadRequest, 0, 0, kAbort, R::protocolError, kNone, S::connecting},

    {S::connected, T::methodRequest, 0, 0, kInvokeMethod, kNone, kNone, S::connected},
    {S::connected, T::disconnectRequest, 0, 0, kLeave | kSendDisconnect, R::disconnect, R::userRequest, S::null},
    {S::connected, T::rcvDisconnect, 0, 0, kLeave, R::disconnect, R::disconnect, S::null},
    {S::connected, T::peerLeft, 0, 0, kLeave, R::disconnect, R::disconnect, S::null},
    {S::connected, T::rcvPush, kPush, 0, kIndicatePush, kNone, kNone, S::connected},
    {S::connected, T::rcvConfirmedPush, kConfirmedPush | kPushRoom, 0, kIndicatePush, kNone, kNone, S::connected},
    {S::connected, T::rcvConfirmedPush, kConfirmedPush, kPushRoom, kAbort, R::morExceeded, kNone, S::connected},
    {S::connected, T::rcvConfirmedPush, 0, kConfirmedPush, kAbort, R::protocolError, kNone, S::connected},
    {S::connected, T::rcvBadInvoke, 0, 0, kIndicateException, kNone, R::protocolError, S::connected},
    {S::connected, T::rcvBadRequest, 0, 0, kAbort | kIndicateException, R::protocolError, R::protocolError, S::connected},
    {S::connected, T::suspendRequest, kResume, 0, kPause | kSendSuspend, R::suspend, R::userRequest, S::suspended},
    {S::connected, T::peerSuspended, kResume, 0, kPause, R::suspend, R::suspend, S::suspended},
    {S::connected, T::peerSuspended, 0, kResume, kLeave, R::disconnect, R::suspend, S::null},
    {S::connected, T::resumeRequest, kResume, 0, kAbortAll | kInvokeResume, R::userRequest, kNone, S::resuming},

    {S::suspended, T::resumeRequest, 0, 0, kInvokeResume, kNone, kNone, S::resuming},
    {S::suspended, T::disconnectRequest, 0, 0, kIndicateDisconnect, kNone, R::userRequest, S::null},
    {S::suspended, T::rcvDisconnect, 0, 0, kIndicateDisconnect, kNone, R::disconnect, S::null},
    {S::suspended, T::rcvConfirmedPush, 0, 0, kAbort, R::suspend, kNone, S::suspended},
    {S::suspended, T::rcvBadRequest, 0, 0, kAbort, R::protocolError, kNone, S::suspended},

    {S::resuming, T::rcvReply, kOk, 0, kRespond | kConfirm, kNone, kNone, S::connected},
    {S::resuming, T::rcvReply, 0, kOk, kRespond | kLeave, R::disconnect, kNone, S::null},
    {S::resuming, T::rcvTooLarge, 0, 0, kAbort | kPause, R::mruExceeded, R::mruExceeded, S::suspended},
    {S::resuming, T::rcvOther, 0, 0, kAbort | kPause, R::protocolError, R::protocolError, S::suspended},
    {S::resuming, T::trAbort, kDisconnected, 0, kLeave, R::disconnect, R::disconnect, S::null},
    {S::resuming, T::trAbort, 0, kDisconnected, kPause, R::suspend, kNone, S::suspended},
    {S::resuming, T::peerLeft, 0, 0, kAbort | kLeave, R::disconnect, R::disconnect, S::null},
    {S::resuming, T::peerSuspended, 0, 0, kAbort | kPause, R::suspend, R::suspend, S::suspended},
    {S::resuming, T::rcvDisconnect, 0, 0, kAbort | kLeave, R::disconnect, R::disconnect, S::null},
    {S::resuming, T::methodRequest, 0, 0, kInvokeMethod, kNone, kNone, S::resuming},
    {S::resuming, T::disconnectRequest, 0, 0, kAbort | kLeave | kSendDisconnect, R::disconnect, R::userRequest, S::null},
    {S::resuming, T::suspendRequest, 0, 0, kAbort | kPause | kSendSuspend, R::suspend, R::userRequest, S::suspended},
    {S::resuming, T::rcvConfirmedPush, 0, 0, kAbort, R::protocolError, kNone, S::resuming},
    {S::resuming, T::rcvBadRequest, 0, 0, kAbort, R::protocolError, kNone, S::resuming},
});

constexpr auto kMethodRows = std::to_array<Row>({
    // What comes before the ConnectReply is an answer to nobody.
    {S::requesting, T::trConfirm, kUnconnected, 0, kAbort | kIndicateAbort, R::protocolError, R::protocolError, S::null},
    {S::requesting, T::trConfirm, 0, kUnconnected, kConfirm, kNone, kNone, S::waiting},
    {S::requesting, T::methodAbortRequest, 0, 0, kAbort | kIndicateAbort, R::peerRequest, R::userRequest, S::null},
    {S::requesting, T::trAbort, 0, 0, kIndicateAbort, kNone, kNone, S::null},
    {S::waiting, T::rcvReply, 0, 0, kIndicateResult, kNone, kNone, S::completing},
    {S::waiting, T::rcvTooLarge, 0, 0, kAbort | kIndicateAbort, R::mruExceeded, R::mruExceeded, S::null},
    {S::waiting, T::rcvOther, 0, 0, kAbort | kIndicateAbort, R::protocolError, R::protocolError, S::null},
    {S::waiting, T::methodAbortRequest, 0, 0, kAbort | kIndicateAbort, R::peerRequest, R::userRequest, S::null},
    {S::waiting, T::trAbort, 0, 0, kIndicateAbort, kNone, kNone, S::null},
    {S::completing, T::resultResponse, 0, 0, kRespond, kNone, kNone, S::null},
    {S::completing, T::methodAbortRequest, 0, 0, kAbort | kIndicateAbort, R::peerRequest, R::userRequest, S::null},
    {S::completing, T::trAbort, 0, 0, kIndicateAbort, kNone, kNone, S::null},
});

constexpr auto kPushRows = std::to_array<Row>({
    {S::receiving, T::pushResponse, 0, 0, kRespond, kNone, kNone, S::null},
    {S::receiving, T::pushAbortRequest, 0, 0, kAbort | kIndicateAbort, kNone, R::userRequest, S::null},
    {S::receiving, T::trAbort, 0, 0, kIndicateAbort, kNone, kNone, S::null},
});
// clang-format on

static_assert(kSessionRows.size() <= RowCounts::kMaxRows &&
              kMethodRows.size() <= RowCounts::kMaxRows);

}  // namespace

std::span<const Row> sessionTable() noexcept {
  return kSessionRows;
}
std::span<const Row> methodTable() noexcept {
  return kMethodRows;
}
std::span<const Row> pushTable() noexcept {
  return kPushRows;
}

}  // namespace mmsbrix::session
