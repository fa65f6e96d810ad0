#include "transport/http_client.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "mms/mmscodec.h"
#include "model/mmsg.h"
#include "platform/ascii.h"
#include "platform/files.h"
#include "platform/text.h"
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

std::optional<std::vector<std::uint8_t>> readFile(const char* path, unsigned& error) {
  auto file = platform::InputFile::open(path, &error);
  if (!file) return std::nullopt;
  std::vector<std::uint8_t> content;
  if (file->size() > content.max_size()) throw std::bad_alloc();
  content.resize(static_cast<std::size_t>(file->size()));
  if (!file->read(content, &error)) return std::nullopt;
  return content;
}

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
                         const std::string& trustedCertificates) {
  const std::string proxy =
      proxyHost.empty() ? std::string() : proxyHost + ":" + std::to_string(proxyPort);
  trace("HttpClient::Connect - InternetOpen(\"%s\", INTERNET_OPEN_TYPE_PROXY, %s, ...)", kAgent,
        proxy.c_str());
  session_ = platform::HttpSession::open(
      {.agent = kAgent, .proxy = proxy, .trustedCertificates = trustedCertificates});
  return session_ != nullptr;
}

bool HttpClient::sendMms(const char* file, const char* url,
                         const platform::SendProgress& progress) {
  file = orEmpty(file);
  url = orEmpty(url);
  trace("HttpClient::SendMMS(%s, %s)", file, url);
  status_ = 0;
  responseStatus_ = 0;
  responseText_.clear();
  httpAnswered_ = false;
  detail_.clear();

  bool accepted = false;
  try {
    const std::optional<platform::UrlParts> server = platform::crackUrl(url, status_);
    if (!server) {
      detail_ = errorMeaning(status_);
      return false;
    }
    const std::optional<std::vector<std::uint8_t>> message = readFile(file, status_);
    if (!message) {
      detail_ = errorMeaning(status_);
      return false;
    }
    const OnlineScope online;
    accepted = submit(*server, *message, progress);
  } catch (const std::bad_alloc&) {  // a file or an answer larger than the memory
    status_ = platform::kErrorNotEnoughMemory;
  }
  closeRequest();
  connection_.reset();
  return accepted;
}

// From connecting to the relay's answer.  An error in connecting or opening the request leaves the
// status 0.
bool HttpClient::submit(const platform::UrlParts& server, std::span<const std::uint8_t> message,
                        const platform::SendProgress& progress) {
  if (session_ == nullptr) return false;
  trace("Calling InternetConnect(%08x, %s, %d, ...)", session_->id(), server.host.c_str(),
        int{server.port});
  connection_ = session_->connect(server, user_, password_);
  if (connection_ == nullptr) return false;
  trace("Calling HttpOpenRequest(%08x, POST , %s, ... , %s, %08x)", connection_->id(),
        server.path.c_str(), kAcceptType, kRequestFlags);
  request_ = connection_->openPost(server.path, kAcceptType);
  if (request_ == nullptr) return false;

  std::string headers = "Content-Type: " + std::string(kMmsContentType) +
                        "\nContent-Length: " + std::to_string(message.size());
  std::string shownHeaders = headers;
  if (!user_.empty() && !password_.empty()) {
    constexpr char kAuthorization[] = "\nAuthorization: Basic ";
    headers +=
        kAuthorization + toBase64(asOctets(user_ + ":" + password_)).substr(0, kMaxCredentialsText);
    shownHeaders += std::string(kAuthorization) + "***";
  }
  status_ = sendAndRead(headers, shownHeaders, message, progress);
  return takeAnswer();
}

// What the relay answered; true when it has accepted the message.
bool HttpClient::takeAnswer() {
  if (!httpAnswered_) {
    detail_ = errorMeaning(status_);
    return false;
  }
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
  return takeSendConf();
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
                         0) == 0 ||
      answer.GetMsgType() != CMMsg::MSG_TYPE_SEND_CONF) {
    detail_ = "the answer is no m-send-conf";
    return false;
  }
  responseStatus_ = static_cast<unsigned>(answer.GetResponseStatus());
  if (const CMMString* text = answer.GetResponseText()) responseText_ = text->Text();

  trace("Response Status: 0x%x", responseStatus_);
  if (answer.GetTransactionId() != nullptr) trace("Transaction Id: %s", answer.GetTransactionId());
  if (answer.GetResponseText() != nullptr) trace("Response Text: %s", responseText_.c_str());
  if (answer.GetMessageId() != nullptr) trace("Message Id: %s", answer.GetMessageId());
  if (responseStatus_ == 0) detail_ = "the answer has no response status";
  return responseStatus_ == CMMsg::MSG_RSPSTATUS_OK;
}

CMMSHttp::ResultKind HttpClient::resultKind() const noexcept {
  if (responseStatus_ != 0) return CMMSHttp::ResultKind::responseStatus;
  if (status_ == 0) return CMMSHttp::ResultKind::none;
  return httpAnswered_ ? CMMSHttp::ResultKind::httpStatus : CMMSHttp::ResultKind::error;
}

unsigned long HttpClient::getResult(char* text) const {
  const bool answered = responseStatus_ != 0;
  if (text != nullptr) {
    const std::string_view full = answered ? responseText_ : resultText(status_);
    const std::size_t length = std::min(full.size(), kTextSize - 1);
    full.copy(text, length);
    text[length] = '\0';
  }
  return answered ? responseStatus_ : status_;
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
