#include "model/mmsg.h"

namespace {

// Stores an optional text: null makes it absent.  What is given may be the member's own.
template <class Optional>
bool assignTo(Optional& member, const char* text) {
  if (text == nullptr) {
    member.reset();
  } else {
    member.text.assign(text);
    member.present = true;
  }
  return true;
}

template <class Optional>
bool copyTo(Optional& member, const CMMString* text) {
  if (text == nullptr) {
    member.reset();
  } else {
    member.text = *text;
    member.present = true;
  }
  return true;
}

template <class T>
bool store(T& member, const T& value) {
  member = value;
  return true;
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
  version_.assign(version);
  return true;
}

bool CMMsg::SetTransactionId(const char* id) {
  return assignTo(transactionId_, id);
}

bool CMMsg::SetMessageId(const char* id) {
  return assignTo(messageId_, id);
}

bool CMMsg::SetSubject(const CMMString* subject) {
  return copyTo(subject_, subject);
}

bool CMMsg::SetResponseText(const CMMString* text) {
  return copyTo(responseText_, text);
}

void CMMsg::AssignTransactionId(std::string_view id) {
  transactionId_.text.assign(id);
  transactionId_.present = true;
}

void CMMsg::AssignMessageId(std::string_view id) {
  messageId_.text.assign(id);
  messageId_.present = true;
}

CMMString* CMMsg::NewSubject() {
  return &subject_.emplace();
}

CMMString* CMMsg::NewResponseText() {
  return &responseText_.emplace();
}

const char* CMMsg::GetTransactionId() const noexcept {
  return transactionId_.present ? transactionId_.text.c_str() : nullptr;
}

const char* CMMsg::GetMessageId() const noexcept {
  return messageId_.present ? messageId_.text.c_str() : nullptr;
}

CMMString* CMMsg::GetSubject() noexcept {
  return subject_.present ? &subject_.text : nullptr;
}

CMMString* CMMsg::GetResponseText() const noexcept {
  return responseText_.present ? &responseText_.text : nullptr;
}
