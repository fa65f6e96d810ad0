#include "mms/receiving.h"

#include <initializer_list>

#include "mms/charsets.h"
#include "mms/decoder.h"
#include "mms/field_table.h"
#include "mms/inspector.h"
#include "mms/mms_values.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {
namespace {

constexpr int kNotificationInd = 0x82;
constexpr int kNotifyRespInd = 0x83;
constexpr int kAcknowledgeInd = 0x85;
constexpr int kReadRecInd = 0x87;

// Fields that only these PDUs have, so that a message has no member for them.
constexpr std::uint8_t kContentLocation = 0x03;
constexpr std::uint8_t kDate = 0x05;
constexpr std::uint8_t kMessageSize = 0x0E;
constexpr std::uint8_t kReportAllowed = 0x11;
constexpr std::uint8_t kStatus = 0x15;
constexpr std::uint8_t kReadStatus = 0x1B;

void writeOctetField(Writer& out, std::uint8_t code, std::uint8_t value) {
  out.octet(code | kShortIntegerBit);
  out.octet(value);
}

void writeReportAllowed(Writer& out, std::optional<bool> allowed) {
  if (allowed) writeOctetField(out, kReportAllowed, *allowed ? kYes : kNo);
}

// Fields that a message has, by the rows that write them for messages.
void writeFields(Writer& out, CMMsg& message, std::initializer_list<std::uint8_t> codes) {
  for (const std::uint8_t code : codes) findField(code)->write(out, message);
}

void writeHead(Writer& out, int type, const std::string& transactionId,
               const std::string& version) {
  CMMsg head;
  head.SetMsgType(static_cast<CMMsg::MSG_TYPE>(type));
  head.SetTransactionId(transactionId.c_str());
  head.SetVersion(version.c_str());
  writeFields(out, head, {0x0C, 0x18, 0x0D});
}

std::vector<std::uint8_t> octetsOf(const Writer& out) {
  return {out.written().begin(), out.written().end()};
}

}  // namespace

std::optional<Notification> readNotification(const void* data, std::size_t size) {
  const Inspection pdu = inspect(data, size);
  if (pdu.messageType != kNotificationInd) return std::nullopt;
  CMMsg message;
  decodeMessage({static_cast<const std::uint8_t*>(data), size}, message);
  Notification notification;
  if (message.GetTransactionId() != nullptr) {
    notification.transactionId = message.GetTransactionId();
  }
  if (*message.GetVersion() != '\0') notification.version = message.GetVersion();
  notification.from = *message.GetFrom();
  if (const CMMString* subject = message.GetSubject()) {
    notification.subject =
        toUtf8(subject->Text(), subject->Charset()).value_or(std::string(subject->Text()));
  }
  if (const InspectedField* field = pdu.find(kContentLocation); field && field->text) {
    notification.contentLocation = *field->text;
  }
  if (const InspectedField* field = pdu.find(kMessageSize); field && field->number) {
    notification.messageSize = *field->number;
  }
  return notification;
}

std::vector<std::uint8_t> encodePdu(const NotifyRespInd& answer) {
  Writer out;
  writeHead(out, kNotifyRespInd, answer.transactionId, answer.version);
  writeOctetField(out, kStatus, static_cast<std::uint8_t>(answer.status));
  writeReportAllowed(out, answer.reportAllowed);
  return octetsOf(out);
}

std::vector<std::uint8_t> encodePdu(const AcknowledgeInd& answer) {
  Writer out;
  writeHead(out, kAcknowledgeInd, answer.transactionId, answer.version);
  writeReportAllowed(out, answer.reportAllowed);
  return octetsOf(out);
}

std::vector<std::uint8_t> encodePdu(const ReadRecInd& report) {
  CMMsg message;
  message.SetMsgType(static_cast<CMMsg::MSG_TYPE>(kReadRecInd));
  message.SetVersion(report.version.c_str());
  message.SetMessageId(report.messageId.c_str());
  message.AddTo(&report.to);
  message.SetFrom(&report.from);
  Writer out;
  writeFields(out, message, {0x0C, 0x0D, 0x0B, 0x17, 0x09});
  if (report.date) {
    out.octet(kDate | kShortIntegerBit);
    writeLongInteger(out, *report.date);
  }
  writeOctetField(out, kReadStatus, static_cast<std::uint8_t>(report.status));
  return octetsOf(out);
}

}  // namespace mmsbrix
