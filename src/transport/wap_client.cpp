#include "transport/wap_client.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <new>
#include <utility>

#include "platform/ascii.h"
#include "platform/text.h"
#include "transport/masking.h"
#include "transport/message_file.h"
#include "transport/result_texts.h"
#include "transport/trace.h"
#include "transport/wap_content.h"
#include "transport/wap_text.h"
#include "wapstack/exception_log.h"
#include "wapstack/wdpsock.h"
#include "wsp/wsp_assigned_headers.h"
#include "wsp/wsp_header_values.h"

namespace mmsbrix {
namespace {

using Outcome = CMMSWap::Outcome;
using WapStack::TransactionId;

constexpr std::string_view kSource = "wap_client";

constexpr std::uint8_t kPost = 0x60;
constexpr std::uint8_t kStatusOk = 0x20;
constexpr std::uint8_t kMovedPermanently = 0x31;
constexpr std::uint8_t kMovedTemporarily = 0x32;
/// The response status Error-unspecified.
constexpr std::uint8_t kUnspecified = 0x81;
constexpr std::uint8_t kSessionEnded = 0xE1;
constexpr std::uint8_t kNetworkError = 0xE9;
constexpr std::uint8_t kUserRequest = 0xEA;
constexpr std::uint8_t kContentTypeRefused = 0xEE;
/// Room that a text buffer given to GetResult must have, the terminating zero included.
constexpr std::size_t kTextSize = 512;

struct ReasonText {
  std::uint8_t code;
  const char* text;
};

constexpr auto kReasonTexts = std::to_array<ReasonText>({
    {0xE0, "Protocol error, illegal PDU received"},
    {0xE1, "Session has been disconnected"},
    {0xE2, "Session has been suspended"},
    {0xE3, "Session has been resumed"},
    {0xE4, "The peer is congested and can not process the SDU"},
    {0xE5, "The session connect failed"},
    {0xE6, "The Maximum Receive Unit size was exceeded"},
    {0xE7, "The Maximum Outstanding Requests was exceeded"},
    {0xE8, "Peer request"},
    {0xE9, "Network error"},
    {0xEA, "User request"},
    {0xEB, "User refused Push message. No specific cause, no retries"},
    {0xEC, "Push message cannot be delivered to intended destination"},
    {0xED, "Push message discarded due to resource shortage"},
    {0xEE, "Content type of Push message cannot be processed"},
});

/// "0xE8 (Peer request)"
std::string shownCode(std::uint8_t code) {
  std::array<char, 8> number{};
  std::snprintf(number.data(), number.size(), "0x%02X", unsigned{code});
  const std::string text = sessionCodeText(code);
  return number.data() + (text.empty() ? text : " (" + text + ")");
}

void traceLines(Octets body) {
  constexpr std::size_t kMaxLine = 1024;
  std::string line;
  const auto flush = [&line] {
    if (!line.empty()) trace("  %s", line.c_str());
    line.clear();
  };
  for (const std::uint8_t octet : body) {
    if (octet == '\r' || octet == '\n') {
      flush();
    } else {
      line += static_cast<char>(octet);
      if (line.size() == kMaxLine) flush();
    }
  }
  flush();
}

/// Octets of the headers without the content type at their head.
std::size_t headersBehindType(Octets headers) {
  Reader in(headers);
  WapStack::Content_type_value type;
  return type.decodeFromFrame(in) ? in.left() : 0;
}

void traceResult(std::uint8_t status, Octets headers, Octets body) {
  const TypedHeaders content = readTypedHeaders(headers);
  trace("WSP Status: 0x%x (%s)", unsigned{status}, sessionCodeText(status));
  trace("Content type: %s", content.contentType.c_str());
  trace("Headers: Len = %d", static_cast<int>(headersBehindType(headers)));
  for (const HeaderField& field : content.fields) trace("  %s", printHeader(field).c_str());
  trace("Body: Len = %d", static_cast<int>(body.size()));
  if (startsWithIgnoringCase(content.contentType, "text")) {
    trace("Body: %s", std::string(body.begin(), body.end()).c_str());
  } else {
    traceLines(body);
  }
}

}  // namespace

const char* sessionCodeText(std::uint8_t code) noexcept {
  const auto known = std::ranges::find(kReasonTexts, code, &ReasonText::code);
  if (known != kReasonTexts.end()) return known->text;
  return orEmpty(WapAssignments::statusText(static_cast<int>(httpStatusOf(code))));
}

/// The fifth row continues the fourth where that is full; the sixth stands for HTTP's fifth.
unsigned httpStatusOf(std::uint8_t wspStatus) noexcept {
  const unsigned high = wspStatus >> 4;
  const unsigned low = wspStatus & 0x0FU;
  if (high == 5) return 416 + low;
  if (high == 6) return 500 + low;
  return high * 100 + low;
}

WspClient::WspClient(WapStack::ApiDriverTask& task, const WapTiming& timing,
                     CMMSWap::NotificationHandler notified)
    : WspClientApplication(task), timing_(timing), notified_(std::move(notified)) {}

WspClient::~WspClient() {
  closeClientPort();
}

bool WspClient::Connect(const char* host, unsigned port) {
  requested_ = {};
  requested_.clientSduSize = 0;
  requested_.serverSduSize = 0;
  requested_.methodMor = std::uint8_t{4};
  std::uint8_t options = session::kResumeFacility;
  if (notified_) {
    options |= session::kPushFacility | session::kConfirmedPushFacility;
    requested_.pushMor = std::uint8_t{4};
  }
  requested_.protocolOptions = options;
  if (!openPort(host, port)) return false;

  sessionHeaders_ =
      encodeHeaderBlock({{"Accept", "*/*"}, {"User-Agent", "Tarvik Mmsbrix 1.0"}}).octets;

  connectTo(gateway_);
  // A copy: what ends the second attempt replaces the address.
  if (const std::optional<WdpAddress> redirect = redirect_) connectTo(*redirect);
  return endConnecting();
}

bool WspClient::openPort(const char* host, unsigned port) {
  std::error_code error;
  const auto gateway = resolveAddress(std::string(host) + ":" + std::to_string(port), error);
  std::uint16_t type = portType(static_cast<std::uint16_t>(port));
  trace("WAP Gateway Address = %s, Port = %d (Port Type = %d)", host, static_cast<int>(port),
        int{type});
  if (type == 0) {
    type = kSessionPort;
    trace("Port Type Unknown : use %d", int{type});
  }
  std::optional<WdpAddress> local;
  if (gateway && gateway->port == 0) {
    error = std::make_error_code(std::errc::invalid_argument);
  } else if (gateway) {
    gateway_ = *gateway;
    local = selectLocalIPaddress(LocalAddressChoice::byRoute, gateway_);
    if (!local) error = std::make_error_code(std::errc::network_unreachable);
  }
  const auto& octets = local.value_or(WdpAddress{}).octets;
  if (local && local->size != 4) {
    trace("selectLocalIPaddress() = %s", hostText(*local).c_str());
  } else {
    trace("selectLocalIPaddress() = %d.%d.%d.%d", int{octets[0]}, int{octets[1]}, int{octets[2]},
          int{octets[3]});
  }
  if (local) local = createClientPort(type, *local, transactionSettings(), error);
  if (!local) {
    trace("createClientPort() Failed");
    return end(Outcome::noPort, "no way to the gateway " + std::string(host) + ":" +
                                    std::to_string(port) + ": " + error.message());
  }
  local_ = *local;
  trace("m_LocalAddr = %s", toString(local_).c_str());
  return true;
}

WapStack::TransactionSettings WspClient::transactionSettings() const {
  WapStack::TransactionSettings settings;
  settings.baseRetry = timing_.retryInterval;
  settings.groupRetry = std::min(settings.groupRetry, timing_.retryInterval);
  settings.perKilooctet = std::min(settings.perKilooctet, timing_.retryInterval / 25);
  settings.maxRetries = static_cast<std::uint8_t>(std::clamp(timing_.maxRetries, 0, 255));
  settings.silenceLimit = timing_.silenceLimit;
  settings.overallLimit = timing_.overallLimit;
  return settings;
}

void WspClient::connectTo(const WdpAddress& server) {
  trace("WspClient Connecting...");
  server_ = server;
  state_.set(kConnecting);
  s_Connect_req(server, sessionHeaders_, requested_);
  waitWhile(kConnecting);
}

void WspClient::waitWhile(State state) {
  waiting_ = true;
  struct Done {
    bool& waiting;
    ~Done() { waiting = false; }  // also when the host's pump throws
  } const done{waiting_};
  state_.waitWhile(state);
}

bool WspClient::SendMMS(const char* url, const char* file) {
  trace("WspClient SendMMS() pszMMSCUrl = %s, pszMMSFile = %s", maskedUrl(url).c_str(), file);
  if (state_.get() != kConnected) return end(lostOutcome(), lostDetail());
  unsigned error = 0;
  std::shared_ptr<std::vector<std::uint8_t>> message;
  try {
    if (auto content = readMessageFile(file, error)) {
      message = std::make_shared<std::vector<std::uint8_t>>(std::move(*content));
    }
  } catch (const std::bad_alloc&) {
    return end(Outcome::fileUnreadable, "the message is larger than the memory");
  }
  if (message == nullptr) {
    std::string detail(errorMeaning(error));
    if (detail.empty()) detail = resultText(error);
    return end(Outcome::fileUnreadable, "the message cannot be read: " + detail);
  }
  return post(url, std::move(message));
}

bool WspClient::SendMMS(const char* url, Octets message) {
  trace("WspClient SendMMS() pszMMSCUrl = %s, %d octets", maskedUrl(url).c_str(),
        static_cast<int>(message.size()));
  if (state_.get() != kConnected) return end(lostOutcome(), lostDetail());
  return post(url, std::make_shared<std::vector<std::uint8_t>>(message.begin(), message.end()));
}

bool WspClient::post(const char* url, std::shared_ptr<std::vector<std::uint8_t>> message) {
  trace("WspClient Posting...");
  // From here on the stack's thread writes the result, unless the session has ended by now.
  const std::uint8_t before = std::exchange(result_, std::uint8_t{0});
  responseText_.clear();
  abortReason_ = 0;
  answerFault_ = "";
  if (!state_.change(kConnected, kPosting)) {
    result_ = before;
    return end(lostOutcome(), lostDetail());
  }
  s_MethodInvoke_req(transactionCounter_++, kPost,
                     {url, std::string(kMmsContentType), {}, std::move(message)});
  waitWhile(kPosting);
  return endPosting();
}

void WspClient::Disconnect() {
  if (!state_.change(kConnected, kDisconnecting)) return;
  trace("WspClient Disconnecting...");
  s_Disconnect_req(kUserRequest);
  waitWhile(kDisconnecting);
}

unsigned long WspClient::GetResult(char* text) const {
  if (text == nullptr) return result_;
  const std::string_view full =
      result_ < 0x80 ? std::string_view(sessionCodeText(result_)) : responseText_;
  const std::size_t length = std::min(full.size(), kTextSize - 1);
  full.copy(text, length);
  text[length] = '\0';
  return result_;
}

// What came of an operation, in the caller's words.

bool WspClient::end(Outcome outcome, std::string detail) {
  outcome_ = outcome;
  detail_ = std::move(detail);
  return false;
}

std::string WspClient::gatewayName() const {
  return "the gateway " + toString(server_);
}

bool WspClient::endConnecting() {
  if (state_.get() == kConnected) {
    end(Outcome::none, "");
    return true;
  }
  const bool silent = endReason_ == kNetworkError;
  const std::string what = silent ? " does not answer" : " refused the session: ";
  return end(silent ? Outcome::noAnswer : Outcome::refused,
             gatewayName() + what + (silent ? "" : shownCode(endReason_)));
}

Outcome WspClient::lostOutcome() const {
  return endReason_ == kNetworkError ? Outcome::noAnswer : Outcome::disconnected;
}

std::string WspClient::lostDetail() const {
  if (endReason_ == 0) return "there is no session";
  return "the session with " + gatewayName() + " has ended: " + shownCode(endReason_);
}

bool WspClient::endPosting() {
  if (result_ == CMMsg::MSG_RSPSTATUS_OK) {
    end(Outcome::accepted, "");
    return true;
  }
  if (result_ >= 0x80 || *answerFault_ != '\0') return end(Outcome::relayStatus, answerFault_);
  if (result_ != 0) {
    return end(Outcome::gatewayStatus, gatewayName() + " answered with the WSP status " +
                                           shownCode(result_) + ", HTTP " +
                                           std::to_string(httpStatusOf(result_)));
  }
  if (state_.get() != kConnected && abortReason_ == 0) return end(lostOutcome(), lostDetail());
  if (abortReason_ == kSessionEnded) {
    return end(Outcome::disconnected,
               "the session with " + gatewayName() + " has ended: " + shownCode(abortReason_));
  }
  if (abortReason_ == kNetworkError) {
    return end(Outcome::noAnswer, gatewayName() + " does not answer any more");
  }
  return end(Outcome::aborted, "the exchange was aborted: " + shownCode(abortReason_));
}

Outcome WspClient::outcome() const {
  return outcome_;
}

const char* WspClient::failureDetail() const {
  return detail_.c_str();
}

// The stack's thread.

const WdpAddress& WspClient::serverAddress() const {
  return redirect_ ? *redirect_ : gateway_;
}

void WspClient::s_Connect_cnf(Octets headers, const WapStack::Agreement& agreement) {
  trace("s_Connect_cnf");
  trace("Headers:");
  trace("  Len = %d", static_cast<int>(headers.size()));
  trace("Capabilities:");
  trace("  client_SDU_Size = %d", static_cast<int>(agreement.clientSduSize));
  trace("  server_SDU_Size = %d", static_cast<int>(agreement.serverSduSize));
  trace("  maxOutstandingMethodReqs = %d", int{agreement.methodMor});
  trace("  maxOutstandingPushReqs = %d", int{agreement.pushMor});
  trace("  confPushFacility = %d", agreement.has(session::kConfirmedPushFacility) ? 1 : 0);
  trace("  pushFacility = %d", agreement.has(session::kPushFacility) ? 1 : 0);
  trace("  sessionResumeFacility = %d", agreement.has(session::kResumeFacility) ? 1 : 0);
  trace("  ackHeaders = %d", agreement.has(session::kAckHeadersFacility) ? 1 : 0);
  endReason_ = 0;
  state_.set(kConnected);
}

void WspClient::s_Exception_ind(std::uint8_t) {
  trace("s_Exception_ind");
}

void WspClient::s_Disconnect_ind(std::uint8_t reason, const std::vector<WdpAddress>& redirect,
                                 Octets, Octets) {
  trace("s_Disconnect_ind() reasonCode = 0x%02X (%s)", unsigned{reason}, sessionCodeText(reason));
  if (state_.get() == kDisconnected) return;  // the caller reads what the first one left
  redirect_.reset();
  if ((reason == kMovedPermanently || reason == kMovedTemporarily) && !redirect.empty()) {
    redirect_ = redirect.front();
    trace("s_Disconnect_ind() Redirect Address = %s:%i", hostText(*redirect_).c_str(),
          int{redirect_->port});
  }
  endReason_ = reason;
  state_.set(kDisconnected);
}

void WspClient::s_MethodInvoke_cnf(TransactionId id) {
  trace("s_MethodInvoke_cnf() transactionId = %d", static_cast<int>(id));
}

void WspClient::s_MethodResult_ind(TransactionId id, std::uint8_t status, Octets headers,
                                   Octets body) {
  trace("s_MethodResult_ind() transactionId = %d", static_cast<int>(id));
  s_MethodResult_res(id);
  answered_ = id;
  if (tracing()) traceResult(status, headers, body);
  if (id <= transactionCounter_) {
    if (status == kStatusOk) {
      takeAnswer(headers, body);
    } else {
      result_ = status;
    }
  }
  state_.set(kConnected);
}

/// An answer without a usable m-send-conf is an unspecified error.
void WspClient::takeAnswer(Octets headers, Octets body) {
  result_ = kUnspecified;
  answerFault_ = "the answer is no MMS message";
  if (!isMmsContentType(readTypedHeaders(headers).contentType)) return;
  answerFault_ = "the answer is no m-send-conf";
  const auto answer = readMms(body, CMMsg::MSG_TYPE_SEND_CONF);
  if (answer == nullptr) return;
  result_ = static_cast<std::uint8_t>(answer->GetResponseStatus());
  answerFault_ = result_ == 0 ? "the answer has no response status" : "";
  if (const CMMString* text = answer->GetResponseText()) responseText_ = text->Text();
  trace("Response Status: 0x%x", unsigned{result_});
  if (answer->GetTransactionId() != nullptr) {
    trace("Transaction Id: %s", answer->GetTransactionId());
  }
  if (answer->GetResponseText() != nullptr) trace("Response Text: %s", responseText_.c_str());
  if (answer->GetMessageId() != nullptr) trace("Message Id: %s", answer->GetMessageId());
}

void WspClient::s_MethodAbort_ind(TransactionId id, std::uint8_t reason) {
  trace("s_MethodAbort_ind() transactionId = %d reason = 0x%02X (%s)", static_cast<int>(id),
        unsigned{reason}, sessionCodeText(reason));
  // Behind the result, or the end of the session, the caller is past it and maybe in the next one.
  if (id == answered_ || state_.get() != kPosting) return;
  abortReason_ = reason;
  state_.set(kConnected);
}

void WspClient::s_Suspend_ind(std::uint8_t) {
  trace("s_Suspend_ind");
}

void WspClient::s_Resume_cnf(Octets) {
  trace("s_Resume_cnf");
}

void WspClient::s_Unit_MethodResult_ind(TransactionId, std::uint8_t, Octets, Octets) {
  trace("s_Unit_MethodResult_ind");
}

void WspClient::s_Push_ind(Octets headers, Octets body) {
  trace("s_Push_ind");
  takePush(headers, body);
}

void WspClient::s_ConfirmedPush_ind(TransactionId id, Octets headers, Octets body) {
  trace("s_ConfirmedPush_ind");
  if (takePush(headers, body)) {
    s_ConfirmedPush_res(id);
  } else {
    s_PushAbort_req(id, kContentTypeRefused);
  }
}

bool WspClient::takePush(Octets headers, Octets body) {
  if (!notified_ || !isMmsContentType(readTypedHeaders(headers).contentType)) return false;
  const auto notification = readMms(body, CMMsg::MSG_TYPE_NOTIFICATION_IND);
  if (notification == nullptr) return false;
  try {
    notified_(*notification);
    return true;
  } catch (const std::exception& exception) {
    logCriticalAssertion(kSource, __LINE__, exception.what());
  } catch (...) {
    logCriticalAssertion(kSource, __LINE__, "unknown exception");
  }
  return false;
}

}  // namespace mmsbrix
