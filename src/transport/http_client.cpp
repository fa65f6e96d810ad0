#include "transport/http_client.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "mms/inspector.h"
#include "mms/mmscodec.h"
#include "model/mmsg.h"
#include "platform/ascii.h"
#include "platform/files.h"
#include "platform/text.h"
#include "transport/masking.h"
#include "transport/message_file.h"
#include "transport/result_texts.h"
#include "transport/trace.h"
#include "wsp/http_text.h"

namespace mmsbrix {
namespace {

constexpr char kAgent[] = "Tarvik Mmsbrix 1.0";
constexpr char kAcceptType[] = "*/*";
constexpr std::string_view kMmsContentType = "application/vnd.wap.mms-message";
/// Not from a cache, into no cache, over a connection that is kept.
constexpr unsigned kRequestFlags = 0x84400000;
constexpr unsigned kStatusOk = 200;
/// Longest Base64 text of credentials; what goes beyond is cut off.
constexpr std::size_t kMaxCredentialsText = 512;

/// Lifts the user's offline mode for the duration of a submission.
class OnlineScope {
 public:
  OnlineScope() : wasOffline_(platform::isOfflineByUser()) {
    if (wasOffline_) platform::setOnline();
  }
  OnlineScope(const OnlineScope&) = delete;
  OnlineScope& operator=(const OnlineScope&) = delete;
  ~OnlineScope() {
    if (wasOffline_) platform::restoreOfflineByUser();
  }

 private:
  const bool wasOffline_;
};

}  // namespace

HttpClient::HttpClient(std::string user, std::string password)
    : user_(std::move(user)), password_(std::move(password)) {}

bool HttpClient::connect(const std::string& proxyHost, unsigned proxyPort,
                         const std::string& trustedCertificates, std::chrono::seconds stallLimit,
                         const std::string& agent) {
  const std::string proxy =
      proxyHost.empty() ? std::string() : proxyHost + ":" + std::to_string(proxyPort);
  const std::string ownName = agent.empty() ? kAgent : agent;
  trace("HttpClient::Connect - InternetOpen(\"%s\", INTERNET_OPEN_TYPE_PROXY, %s, ...)",
        ownName.c_str(), proxy.c_str());
  session_ = platform::HttpSession::open({.agent = ownName,
                                          .proxy = proxy,
                                          .stallLimit = stallLimit,
                                          .trustedCertificates = trustedCertificates});
  return session_ != nullptr;
}

// Runs the steps of one operation on `url` from a clean state to the end of its request.
template <class Step>
bool HttpClient::perform(const char* url, const Step& step) {
  status_ = 0;
  relayStatus_ = 0;
  relayStatusKind_ = CMMSHttp::ResultKind::none;
  responseText_.clear();
  httpAnswered_ = false;
  detail_.clear();

  bool done = false;
  try {
    if (const std::optional<platform::UrlParts> server = platform::crackUrl(url, status_)) {
      done = step(*server);
    }
  } catch (const std::bad_alloc&) {  // a file or an answer larger than the memory
    status_ = platform::kErrorNotEnoughMemory;
  }
  if (!done && !httpAnswered_ && detail_.empty()) detail_ = errorMeaning(status_);
  closeRequest();
  connection_.reset();
  return done;
}

bool HttpClient::sendMms(const char* file, const char* url, const RequestSettings& settings) {
  file = orEmpty(file);
  url = orEmpty(url);
  trace("HttpClient::SendMMS(%s, %s)", file, maskedUrl(url).c_str());
  return perform(url, [&](const platform::UrlParts& server) {
    const std::optional<std::vector<std::uint8_t>> message = readMessageFile(file, status_);
    return message && submit(server, *message, settings);
  });
}

bool HttpClient::sendMms(std::span<const std::uint8_t> message, const char* url,
                         const RequestSettings& settings) {
  url = orEmpty(url);
  trace("HttpClient::SendMMS(%d octets, %s)", static_cast<int>(message.size()),
        maskedUrl(url).c_str());
  return perform(
      url, [&](const platform::UrlParts& server) { return submit(server, message, settings); });
}

bool HttpClient::fetchMms(const char* url, const RequestSettings& settings,
                          std::vector<std::uint8_t>& pdu) {
  url = orEmpty(url);
  trace("HttpClient::FetchMMS(%s)", maskedUrl(url).c_str());
  return perform(url, [&](const platform::UrlParts& server) {
    if (!exchange(server, Verb::get, {}, settings) || !answerIsMms() || !takeRetrieveConf()) {
      return false;
    }
    pdu = std::move(responseBody_);
    return true;
  });
}

bool HttpClient::postReport(std::span<const std::uint8_t> pdu, const char* url,
                            const RequestSettings& settings) {
  url = orEmpty(url);
  trace("HttpClient::PostReport(%d octets, %s)", static_cast<int>(pdu.size()),
        maskedUrl(url).c_str());
  return perform(url, [&](const platform::UrlParts& server) {
    // 200, 202 and 204 are all in use: there is nothing more to be said.
    return exchange(server, Verb::post, pdu, settings) && status_ >= kStatusOk && status_ < 300;
  });
}

bool HttpClient::submit(const platform::UrlParts& server, std::span<const std::uint8_t> message,
                        const RequestSettings& settings) {
  if (settings.sizeLimit != 0 && message.size() > settings.sizeLimit) {
    status_ = platform::kErrorFileTooLarge;
    detail_ = "the message has " + std::to_string(message.size()) + " octets, the limit is " +
              std::to_string(settings.sizeLimit);
    return false;
  }
  return exchange(server, Verb::post, message, settings) && answerIsMms() && takeSendConf();
}

// From connecting to the relay's answer; true when there is an HTTP answer.  An error in connecting
// or opening the request leaves the status 0.
bool HttpClient::exchange(const platform::UrlParts& server, Verb verb,
                          std::span<const std::uint8_t> body, const RequestSettings& settings) {
  if (session_ == nullptr) return false;
  const OnlineScope online;
  trace("Calling InternetConnect(%08x, %s, %d, ...)", session_->id(), server.host.c_str(),
        int{server.port});
  connection_ = session_->connect(server, user_, password_);
  if (connection_ == nullptr) return false;
  const bool post = verb == Verb::post;
  trace("Calling HttpOpenRequest(%08x, %s , %s, ... , %s, %08x)", connection_->id(),
        post ? "POST" : "GET", server.path.c_str(), kAcceptType, kRequestFlags);
  request_ = post ? connection_->openPost(server.path, kAcceptType)
                  : connection_->openGet(server.path, kAcceptType);
  if (request_ == nullptr) return false;

  std::string headers = settings.headers;
  if (post) {
    headers += "Content-Type: " + std::string(kMmsContentType) +
               "\nContent-Length: " + std::to_string(body.size());
  } else if (!headers.empty()) {
    headers.pop_back();
  }
  std::string shownHeaders = maskedHeaders(headers);
  if (!user_.empty() && !password_.empty()) {
    const std::string authorization =
        std::string(headers.empty() ? "" : "\n") + "Authorization: Basic ";
    headers +=
        authorization + toBase64(asOctets(user_ + ":" + password_)).substr(0, kMaxCredentialsText);
    shownHeaders += authorization + "***";
  }
  status_ = sendAndRead(headers, shownHeaders, body, settings.progress);
  return httpAnswered_;
}

// True when the answer is a whole one with the type of MMS PDUs.
bool HttpClient::answerIsMms() {
  if (status_ != kStatusOk) return false;
  if (!request_->complete()) {
    detail_ = "the answer is broken, cut short or too large";
    return false;
  }
  const CMMHdr* contentType = responseHeaders_.Find("Content-Type");
  if (contentType == nullptr) {
    detail_ = "the answer has no content type";
    return false;
  }
  if (!startsWithIgnoringCase(contentType->Value(), kMmsContentType)) {
    detail_ = "the answer is " + std::string(contentType->Value()) + ", no MMS message";
    return false;
  }
  return true;
}

unsigned HttpClient::sendAndRead(const std::string& headers, const std::string& shownHeaders,
                                 std::span<const std::uint8_t> message,
                                 const platform::SendProgress& progress) {
  responseHeaders_.Clear();
  responseBody_.clear();
  trace("Calling HttpSendRequest(%08x, %s, -1, %08x, %d)", request_->id(), shownHeaders.c_str(),
        platform::newHandleNumber(), static_cast<int>(message.size()));
  if (const unsigned error = request_->send(headers, message, progress); error != 0) {
    trace("Error %d on HttpSendRequest", static_cast<int>(error));
    return error;
  }
  trace("Calling HttpQueryInfo(%08x, ...)", request_->id());
  parseHeaders();
  readBody();
  httpAnswered_ = true;
  return request_->status();
}

void HttpClient::parseHeaders() {
  const std::vector<std::string> lines = request_->rawHeaders();
  if (lines.empty()) return;
  std::size_t octets = 0;
  for (const std::string& line : lines) octets += line.size() + 1;
  trace("HttpQueryInfo returned success and %d bytes", static_cast<int>(octets));
  trace("Response dump:");
  trace("%s", lines.front().c_str());
  for (const std::string& line : std::span(lines).subspan(1)) {
    trace("%s", line.c_str());
    const std::string_view text(line);
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return;
    std::string_view value = text.substr(colon + 1);
    value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
    responseHeaders_.AddNew()->Assign(text.substr(0, colon), value);
  }
}

void HttpClient::readBody() {
  while (const std::size_t ready = request_->available()) {
    const std::size_t before = responseBody_.size();
    responseBody_.resize(before + ready);
    const std::size_t got = request_->read(std::span(responseBody_).subspan(before)).value_or(0);
    responseBody_.resize(before + got);
    if (got == 0) return;
  }
}

// Decodes the answer; true when it is an m-send-conf that says Ok.
bool HttpClient::takeSendConf() {
  CMMsg answer;
  if (MMS_LoadFromMemory(responseBody_.data(), static_cast<unsigned>(responseBody_.size()), &answer,
                         0) == 0) {
    throw std::bad_alloc();
  }
  if (answer.GetMsgType() != CMMsg::MSG_TYPE_SEND_CONF) {
    detail_ = "the answer is no m-send-conf";
    return false;
  }
  relayStatus_ = static_cast<unsigned>(answer.GetResponseStatus());
  relayStatusKind_ = CMMSHttp::ResultKind::responseStatus;
  if (const CMMString* text = answer.GetResponseText()) responseText_ = text->Text();

  trace("Response Status: 0x%x", relayStatus_);
  if (answer.GetTransactionId() != nullptr) trace("Transaction Id: %s", answer.GetTransactionId());
  if (answer.GetResponseText() != nullptr) trace("Response Text: %s", responseText_.c_str());
  if (answer.GetMessageId() != nullptr) trace("Message Id: %s", answer.GetMessageId());
  if (relayStatus_ == 0) detail_ = "the answer has no response status";
  return relayStatus_ == CMMsg::MSG_RSPSTATUS_OK;
}

// Looks at the answer to a GET; true when it is an m-retrieve-conf with a message.  A relay that
// says nothing of a status means Ok. [OMA-MMS-ENC 6.3]
bool HttpClient::takeRetrieveConf() {
  constexpr int kRetrieveStatus = 0x19;
  constexpr int kRetrieveText = 0x1A;
  const Inspection answer = inspect(responseBody_.data(), responseBody_.size());
  if (answer.messageType != CMMsg::MSG_TYPE_RETRIEVE_CONF) {
    detail_ = "the answer is no m-retrieve-conf";
    return false;
  }
  relayStatus_ = CMMsg::MSG_RSPSTATUS_OK;
  relayStatusKind_ = CMMSHttp::ResultKind::retrieveStatus;
  if (const InspectedField* status = answer.find(kRetrieveStatus); status && status->number) {
    relayStatus_ = static_cast<unsigned>(*status->number);
  }
  if (const InspectedField* text = answer.find(kRetrieveText); text && text->text) {
    responseText_ = *text->text;
  }
  trace("Retrieve Status: 0x%x", relayStatus_);
  return relayStatus_ == CMMsg::MSG_RSPSTATUS_OK;
}

CMMSHttp::ResultKind HttpClient::resultKind() const noexcept {
  if (relayStatus_ != 0) return relayStatusKind_;
  if (status_ == 0) return CMMSHttp::ResultKind::none;
  return httpAnswered_ ? CMMSHttp::ResultKind::httpStatus : CMMSHttp::ResultKind::error;
}

unsigned long HttpClient::getResult(char* text) const {
  const bool answered = relayStatus_ != 0;
  if (text != nullptr) {
    const std::string_view full = answered ? responseText_ : resultText(status_);
    const std::size_t length = std::min(full.size(), kTextSize - 1);
    full.copy(text, length);
    text[length] = '\0';
  }
  return answered ? relayStatus_ : status_;
}

void HttpClient::closeRequest() {
  request_.reset();
  responseHeaders_.Clear();
  responseBody_.clear();
  responseBody_.shrink_to_fit();
}

void HttpClient::disconnect() {
  closeRequest();
  connection_.reset();
  session_.reset();
}

}  // namespace mmsbrix
