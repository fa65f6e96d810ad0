#include "model/mmsg.h"

namespace {

// Stores an optional text: null makes it absent.
bool assign(std::optional<std::string>& member, const char* text) {
  if (text == nullptr) {
    member.reset();
  } else {
    member = text;
  }
  return true;
}

bool assign(std::optional<CMMString>& member, const CMMString* text) {
  if (text == nullptr) {
    member.reset();
  } else {
    member = *text;
  }
  return true;
}

template <class T>
bool store(T& member, const T& value) {
  member = value;
  return true;
}

const char* textOrNull(const std::optional<std::string>& member) noexcept {
  return member ? member->c_str() : nullptr;
}

}  // namespace

CMMsg::CMMsg() = default;
CMMsg::CMMsg(const CMMsg& other) = default;
CMMsg::CMMsg(CMMsg&& other) noexcept = default;
CMMsg& CMMsg::operator=(const CMMsg& other) = default;
CMMsg& CMMsg::operator=(CMMsg&& other) noexcept = default;
CMMsg::~CMMsg() = default;

void CMMsg::Clear() noexcept {
  *this = CMMsg();
}

bool CMMsg::SetMsgType(MSG_TYPE type) noexcept {
  return store(type_, type);
}

bool CMMsg::SetMessageClass(MSG_CLASS messageClass) noexcept {
  return store(class_, messageClass);
}

bool CMMsg::SetPriority(MSG_PRIORITY priority) noexcept {
  return store(priority_, priority);
}

bool CMMsg::SetResponseStatus(MSG_RSPSTATUS status) noexcept {
  return store(responseStatus_, status);
}

bool CMMsg::SetSenderVisibility(int visibility) noexcept {
  return store(senderVisibility_, visibility);
}

bool CMMsg::SetDeliveryReport(int report) noexcept {
  return store(deliveryReport_, report);
}

bool CMMsg::SetReadReply(int reply) noexcept {
  return store(readReply_, reply);
}

bool CMMsg::SetDate(const SYSTEMTIME* date) noexcept {
  return store(date_, *date);
}

bool CMMsg::SetExpiry(const SYSTEMTIME* expiry) noexcept {
  return store(expiry_, *expiry);
}

bool CMMsg::SetDeliveryTime(const SYSTEMTIME* deliveryTime) noexcept {
  return store(deliveryTime_, *deliveryTime);
}

bool CMMsg::SetFrom(const CMMAddr* from) {
  return store(from_, *from);
}

bool CMMsg::AddTo(const CMMAddr* to) {
  to_.Add(to);
  return true;
}

bool CMMsg::AddCc(const CMMAddr* cc) {
  cc_.Add(cc);
  return true;
}

bool CMMsg::AddBcc(const CMMAddr* bcc) {
  bcc_.Add(bcc);
  return true;
}

bool CMMsg::SetVersion(const char* version) {
  version_ = version;
  return true;
}

bool CMMsg::SetTransactionId(const char* id) {
  return assign(transactionId_, id);
}

bool CMMsg::SetMessageId(const char* id) {
  return assign(messageId_, id);
}

bool CMMsg::SetSubject(const CMMString* subject) {
  return assign(subject_, subject);
}

bool CMMsg::SetResponseText(const CMMString* text) {
  return assign(responseText_, text);
}

const char* CMMsg::GetTransactionId() const noexcept {
  return textOrNull(transactionId_);
}

const char* CMMsg::GetMessageId() const noexcept {
  return textOrNull(messageId_);
}

CMMString* CMMsg::GetSubject() noexcept {
  return subject_ ? &*subject_ : nullptr;
}

CMMString* CMMsg::GetResponseText() const noexcept {
  return responseText_ ? &*responseText_ : nullptr;
}
