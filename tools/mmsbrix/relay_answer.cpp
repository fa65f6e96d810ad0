#include "relay_answer.h"

#include <mmsbrix/mms/inspector.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace mmsbrix::tool {
namespace {

constexpr std::uint8_t kSendReq = 0x80;
constexpr std::uint8_t kSendConf = 0x81;
constexpr std::uint8_t kNotificationInd = 0x82;
constexpr std::uint8_t kNotifyRespInd = 0x83;
constexpr std::uint8_t kRetrieveConf = 0x84;
constexpr std::uint8_t kAcknowledgeInd = 0x85;
constexpr std::uint8_t kReadRecInd = 0x87;
constexpr std::uint8_t kQuote = 0x7F;        // before a text whose first octet is 0x80 or above
constexpr std::uint8_t kUtf8 = 0xEA;         // charset number 106 as a short-integer
constexpr std::uint8_t kLengthQuote = 0x1F;  // a uintvar length follows
constexpr std::size_t kShortLengths = 31;    // lengths below stand as one octet

// Field codes with the high bit, as on the wire. [OMA-MMS-ENC 7.3, table 12]
constexpr std::uint8_t kBcc = 0x81;
constexpr std::uint8_t kCc = 0x82;
constexpr std::uint8_t kContentLocation = 0x83;
constexpr std::uint8_t kContentType = 0x84;
constexpr std::uint8_t kDate = 0x85;
constexpr std::uint8_t kDeliveryReport = 0x86;
constexpr std::uint8_t kExpiry = 0x88;
constexpr std::uint8_t kFrom = 0x89;
constexpr std::uint8_t kMessageClass = 0x8A;
constexpr std::uint8_t kMessageId = 0x8B;
constexpr std::uint8_t kMessageType = 0x8C;
constexpr std::uint8_t kMmsVersion = 0x8D;
constexpr std::uint8_t kMessageSize = 0x8E;
constexpr std::uint8_t kPriority = 0x8F;
constexpr std::uint8_t kReadReply = 0x90;
constexpr std::uint8_t kResponseStatus = 0x92;
constexpr std::uint8_t kResponseText = 0x93;
constexpr std::uint8_t kSenderVisibility = 0x94;
constexpr std::uint8_t kSubject = 0x96;
constexpr std::uint8_t kTo = 0x97;
constexpr std::uint8_t kTransactionId = 0x98;

const InspectedField* find(const Inspection& pdu, std::uint8_t field) {
  return pdu.find(field & 0x7F);
}

/// Oddities after which a relay cannot know what the sender meant; others it passes on.
bool isBreakage(const Remark& remark) {
  switch (remark.kind) {
    case RemarkKind::truncated:
    case RemarkKind::lengthPastEnd:
    case RemarkKind::missingZero:
    case RemarkKind::countMismatch:
    case RemarkKind::missingField:
    case RemarkKind::notMms:
      return true;
    default:
      return false;
  }
}

void refuse(Verdict& verdict, ResponseStatus status, std::string text) {
  verdict.status = static_cast<std::uint8_t>(status);
  verdict.text = std::move(text);
}

void appendText(std::vector<std::uint8_t>& out, std::string_view text) {
  text = text.substr(0, text.find('\0'));
  if (!text.empty() && static_cast<std::uint8_t>(text.front()) >= 0x80) out.push_back(kQuote);
  out.insert(out.end(), text.begin(), text.end());
  out.push_back(0);
}

// [OMA-MMS-ENC 7.2.9; WAP-230 8.4.2.2]
void appendEncodedString(std::vector<std::uint8_t>& out, std::string_view text) {
  const bool ascii = std::all_of(text.begin(), text.end(),
                                 [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (ascii) {
    appendText(out, text);
    return;
  }
  std::vector<std::uint8_t> value = {kUtf8};
  appendText(value, text);
  std::size_t length = value.size();
  if (length < kShortLengths) {
    out.push_back(static_cast<std::uint8_t>(length));
  } else {
    out.push_back(kLengthQuote);
    std::vector<std::uint8_t> digits;
    do {
      digits.push_back(static_cast<std::uint8_t>((length & 0x7F) | (digits.empty() ? 0 : 0x80)));
      length >>= 7;
    } while (length != 0);
    out.insert(out.end(), digits.rbegin(), digits.rend());
  }
  out.insert(out.end(), value.begin(), value.end());
}

void appendLongInteger(std::vector<std::uint8_t>& out, std::uint64_t value) {
  std::vector<std::uint8_t> digits;
  do {
    digits.push_back(static_cast<std::uint8_t>(value & 0xFF));
    value >>= 8;
  } while (value != 0);
  out.push_back(static_cast<std::uint8_t>(digits.size()));
  out.insert(out.end(), digits.rbegin(), digits.rend());
}

/// Copies fields of a request as they stand on the wire.
class FieldCopier {
 public:
  FieldCopier(std::span<const std::uint8_t> pdu, const Inspection& inspection,
              std::vector<std::uint8_t>& out)
      : pdu_(pdu), inspection_(inspection), out_(out) {}

  /// As often as the field is there; false when it is not.
  bool copy(std::uint8_t code) {
    bool found = false;
    for (const InspectedField& field : inspection_.fields) {
      if (field.code != (code & 0x7F) || field.page != 1) continue;
      const auto octets = pdu_.subspan(field.offset, field.length);
      out_.insert(out_.end(), octets.begin(), octets.end());
      found = true;
    }
    return found;
  }
  /// A sender that is stated and does not hide.
  void copySender() {
    constexpr std::uint8_t kHide = 0x80;
    constexpr std::uint8_t kInsertAddress = 0x81;
    const InspectedField* from = find(inspection_, kFrom);
    const InspectedField* visibility = find(inspection_, kSenderVisibility);
    const bool hides = visibility != nullptr && visibility->number == kHide;
    if (from != nullptr && from->token != kInsertAddress && !hides) copy(kFrom);
  }

 private:
  std::span<const std::uint8_t> pdu_;
  const Inspection& inspection_;
  std::vector<std::uint8_t>& out_;
};

// Type, transaction id and version, as every PDU begins.
std::vector<std::uint8_t> beginPdu(std::uint8_t type, const std::string& transactionId,
                                   std::uint8_t version) {
  std::vector<std::uint8_t> out = {kMessageType, type, kTransactionId};
  appendText(out, transactionId);
  out.insert(out.end(), {kMmsVersion, version});
  return out;
}

}  // namespace

Verdict judge(std::span<const std::uint8_t> pdu) {
  const Inspection inspection = inspect(pdu.data(), pdu.size());
  Verdict verdict;
  if (const InspectedField* field = find(inspection, kTransactionId); field && field->text) {
    verdict.transactionId = *field->text;
  }
  if (const InspectedField* field = find(inspection, kMmsVersion);
      field && field->form == ValueForm::shortInteger && field->valueOffset < pdu.size()) {
    verdict.version = pdu[field->valueOffset];
  }

  if (inspection.messageType != 0 && inspection.messageType != kSendReq) {
    const std::string& name = inspection.messageTypeName;
    refuse(verdict, ResponseStatus::unsupportedMessage,
           (name.empty() ? std::string("a PDU of unknown type") : name) +
               " where an m-send-req is due");
    return verdict;
  }
  constexpr std::array kRecipients = {kTo, kCc, kBcc};
  const bool addressed =
      std::any_of(kRecipients.begin(), kRecipients.end(),
                  [&](std::uint8_t field) { return find(inspection, field) != nullptr; });
  const auto breakage =
      std::find_if(inspection.remarks.begin(), inspection.remarks.end(), [&](const Remark& remark) {
        return isBreakage(remark) && (addressed || remark.kind != RemarkKind::missingField);
      });
  if (breakage != inspection.remarks.end()) {
    refuse(verdict, ResponseStatus::messageFormatCorrupt,
           breakage->text + " (at octet " + std::to_string(breakage->offset) + ")");
  } else if (!addressed) {
    refuse(verdict, ResponseStatus::sendingAddressUnresolved,
           "there is no recipient (To, Cc, Bcc)");
  }
  return verdict;
}

std::vector<std::uint8_t> encodeSendConf(const Verdict& verdict, const std::string& messageId) {
  std::vector<std::uint8_t> out = beginPdu(kSendConf, verdict.transactionId, verdict.version);
  out.insert(out.end(), {kResponseStatus, verdict.status});
  if (!verdict.text.empty()) {
    out.push_back(kResponseText);
    appendEncodedString(out, verdict.text);
  }
  if (verdict.accepted()) {
    out.push_back(kMessageId);
    appendText(out, messageId);
  }
  return out;
}

std::vector<std::uint8_t> encodeNotificationInd(const Delivery& delivery) {
  constexpr std::uint8_t kPersonal = 0x80;
  constexpr std::uint8_t kRelative = 0x81;
  constexpr std::uint64_t kKeptSeconds = std::uint64_t{7} * 24 * 3600;
  const Inspection request = inspect(delivery.request.data(), delivery.request.size());
  std::vector<std::uint8_t> out =
      beginPdu(kNotificationInd, delivery.transactionId, judge(delivery.request).version);
  FieldCopier fields(delivery.request, request, out);
  fields.copySender();
  fields.copy(kSubject);
  if (!fields.copy(kMessageClass)) out.insert(out.end(), {kMessageClass, kPersonal});
  out.push_back(kMessageSize);
  appendLongInteger(out, delivery.request.size());
  std::vector<std::uint8_t> expiry = {kRelative};
  appendLongInteger(expiry, kKeptSeconds);
  out.insert(out.end(), {kExpiry, static_cast<std::uint8_t>(expiry.size())});
  out.insert(out.end(), expiry.begin(), expiry.end());
  out.push_back(kContentLocation);
  appendText(out, delivery.location);
  return out;
}

std::vector<std::uint8_t> encodeRetrieveConf(const Delivery& delivery) {
  const Inspection request = inspect(delivery.request.data(), delivery.request.size());
  std::vector<std::uint8_t> out =
      beginPdu(kRetrieveConf, delivery.transactionId, judge(delivery.request).version);
  FieldCopier fields(delivery.request, request, out);
  out.push_back(kMessageId);
  appendText(out, delivery.messageId);
  if (!fields.copy(kDate)) {
    out.push_back(kDate);
    appendLongInteger(out, delivery.now);
  }
  fields.copySender();
  for (const std::uint8_t code :
       {kTo, kCc, kSubject, kMessageClass, kPriority, kDeliveryReport, kReadReply, kContentType}) {
    fields.copy(code);
  }
  const auto body = delivery.request.subspan(request.headerLength);
  out.insert(out.end(), body.begin(), body.end());
  return out;
}

std::string reportName(std::span<const std::uint8_t> pdu) {
  const Inspection inspection = inspect(pdu.data(), pdu.size());
  switch (inspection.messageType) {
    case kNotifyRespInd:
    case kAcknowledgeInd:
    case kReadRecInd:
      return inspection.messageTypeName;
    default:
      return {};
  }
}

}  // namespace mmsbrix::tool
