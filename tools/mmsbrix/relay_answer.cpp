#include "relay_answer.h"

#include <mmsbrix/mms/inspector.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace mmsbrix::tool {
namespace {

constexpr std::uint8_t kSendReq = 0x80;
constexpr std::uint8_t kSendConf = 0x81;
constexpr std::uint8_t kQuote = 0x7F;        // before a text whose first octet is 0x80 or above
constexpr std::uint8_t kUtf8 = 0xEA;         // charset number 106 as a short-integer
constexpr std::uint8_t kLengthQuote = 0x1F;  // a uintvar length follows
constexpr std::size_t kShortLengths = 31;    // lengths below stand as one octet

// Field codes with the high bit, as on the wire. [OMA-MMS-ENC 7.3, table 12]
constexpr std::uint8_t kBcc = 0x81;
constexpr std::uint8_t kCc = 0x82;
constexpr std::uint8_t kMessageId = 0x8B;
constexpr std::uint8_t kMessageType = 0x8C;
constexpr std::uint8_t kMmsVersion = 0x8D;
constexpr std::uint8_t kResponseStatus = 0x92;
constexpr std::uint8_t kResponseText = 0x93;
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
  std::vector<std::uint8_t> out = {kMessageType, kSendConf, kTransactionId};
  appendText(out, verdict.transactionId);
  out.insert(out.end(), {kMmsVersion, verdict.version, kResponseStatus, verdict.status});
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

}  // namespace mmsbrix::tool
