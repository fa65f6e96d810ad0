#include "mms/field_table.h"

#include <algorithm>
#include <array>

#include "mms/content_type.h"
#include "mms/mms_values.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {
namespace {

// ---- names of enumerated octets
// ------------------------------------------------------------------

constexpr auto kMessageTypes = std::to_array<OctetName>({
    {0x80, "m-send-req"},         {0x81, "m-send-conf"},        {0x82, "m-notification-ind"},
    {0x83, "m-notifyresp-ind"},   {0x84, "m-retrieve-conf"},    {0x85, "m-acknowledge-ind"},
    {0x86, "m-delivery-ind"},     {0x87, "m-read-rec-ind"},     {0x88, "m-read-orig-ind"},
    {0x89, "m-forward-req"},      {0x8A, "m-forward-conf"},     {0x8B, "m-mbox-store-req"},
    {0x8C, "m-mbox-store-conf"},  {0x8D, "m-mbox-view-req"},    {0x8E, "m-mbox-view-conf"},
    {0x8F, "m-mbox-upload-req"},  {0x90, "m-mbox-upload-conf"}, {0x91, "m-mbox-delete-req"},
    {0x92, "m-mbox-delete-conf"}, {0x93, "m-mbox-descr"},       {0x94, "m-delete-req"},
    {0x95, "m-delete-conf"},      {0x96, "m-cancel-req"},       {0x97, "m-cancel-conf"},
});
constexpr auto kResponseStatuses = std::to_array<OctetName>({
    {0x80, "Ok"},
    {0x81, "Error-unspecified"},
    {0x82, "Error-service-denied"},
    {0x83, "Error-message-format-corrupt"},
    {0x84, "Error-sending-address-unresolved"},
    {0x85, "Error-message-not-found"},
    {0x86, "Error-network-problem"},
    {0x87, "Error-content-not-accepted"},
    {0x88, "Error-unsupported-message"},
    {0xC0, "Error-transient-failure"},
    {0xC1, "Error-transient-sending-address-unresolved"},
    {0xC2, "Error-transient-message-not-found"},
    {0xC3, "Error-transient-network-problem"},
    {0xC4, "Error-transient-partial-success"},
    {0xE0, "Error-permanent-failure"},
    {0xE1, "Error-permanent-service-denied"},
    {0xE2, "Error-permanent-message-format-corrupt"},
    {0xE3, "Error-permanent-sending-address-unresolved"},
    {0xE4, "Error-permanent-message-not-found"},
    {0xE5, "Error-permanent-content-not-accepted"},
    {0xE6, "Error-permanent-reply-charging-limitations-not-met"},
    {0xE7, "Error-permanent-reply-charging-request-not-accepted"},
    {0xE8, "Error-permanent-reply-charging-forwarding-denied"},
    {0xE9, "Error-permanent-reply-charging-not-supported"},
    {0xEA, "Error-permanent-address-hiding-not-supported"},
    {0xEB, "Error-permanent-lack-of-prepaid"},
});
constexpr auto kRetrieveStatuses = std::to_array<OctetName>({
    {0x80, "Ok"},
    {0xC0, "Error-transient-failure"},
    {0xC1, "Error-transient-message-not-found"},
    {0xC2, "Error-transient-network-problem"},
    {0xE0, "Error-permanent-failure"},
    {0xE1, "Error-permanent-service-denied"},
    {0xE2, "Error-permanent-message-not-found"},
    {0xE3, "Error-permanent-content-unsupported"},
});
constexpr auto kStoreStatuses = std::to_array<OctetName>({
    {0x80, "Success"},
    {0xC0, "Error-transient-failure"},
    {0xC1, "Error-transient-network-problem"},
    {0xE0, "Error-permanent-failure"},
    {0xE1, "Error-permanent-service-denied"},
    {0xE2, "Error-permanent-message-format-corrupt"},
    {0xE3, "Error-permanent-message-not-found"},
    {0xE4, "Error-permanent-mmbox-full"},
});
constexpr auto kYesNo = std::to_array<OctetName>({{kYes, "Yes"}, {kNo, "No"}});
constexpr auto kVisibilities = std::to_array<OctetName>({{kHide, "Hide"}, {kShow, "Show"}});
constexpr auto kClasses = std::to_array<OctetName>(
    {{0x80, "Personal"}, {0x81, "Advertisement"}, {0x82, "Informational"}, {0x83, "Auto"}});
constexpr auto kPriorities =
    std::to_array<OctetName>({{0x80, "Low"}, {0x81, "Normal"}, {0x82, "High"}});
constexpr auto kStatuses = std::to_array<OctetName>({{0x80, "Expired"},
                                                     {0x81, "Retrieved"},
                                                     {0x82, "Rejected"},
                                                     {0x83, "Deferred"},
                                                     {0x84, "Unrecognised"},
                                                     {0x85, "Indeterminate"},
                                                     {0x86, "Forwarded"},
                                                     {0x87, "Unreachable"}});
constexpr auto kReadStatuses =
    std::to_array<OctetName>({{0x80, "Read"}, {0x81, "Deleted without being read"}});
constexpr auto kReplyChargings = std::to_array<OctetName>({{0x80, "Requested"},
                                                           {0x81, "Requested text only"},
                                                           {0x82, "Accepted"},
                                                           {0x83, "Accepted text only"}});
constexpr auto kMmStates = std::to_array<OctetName>(
    {{0x80, "Draft"}, {0x81, "Sent"}, {0x82, "New"}, {0x83, "Retrieved"}, {0x84, "Forwarded"}});
constexpr auto kFlagTokens =
    std::to_array<OctetName>({{0x80, "Add"}, {0x81, "Remove"}, {0x82, "Filter"}});
constexpr auto kTotalsTokens = std::to_array<OctetName>({{0x80, "Messages"}, {0x81, "Bytes"}});
constexpr auto kRetrievalModes = std::to_array<OctetName>({{0x80, "Manual"}});
constexpr auto kContentClasses = std::to_array<OctetName>({{0x80, "text"},
                                                           {0x81, "image-basic"},
                                                           {0x82, "image-rich"},
                                                           {0x83, "video-basic"},
                                                           {0x84, "video-rich"},
                                                           {0x85, "megapixel"},
                                                           {0x86, "content-basic"},
                                                           {0x87, "content-rich"}});
constexpr auto kCancelStatuses = std::to_array<OctetName>(
    {{0x80, "Cancel Request Successfully received"}, {0x81, "Cancel Request corrupted"}});

// ---- reading and writing members
// -----------------------------------------------------------------

constexpr std::size_t kMaxIdOctets = 1023;  // of a transaction or message id; the rest is dropped

constexpr std::uint8_t onWire(std::uint8_t code) noexcept {
  return code | 0x80;
}

template <auto assign>
void readId(Reader& value, CMMsg& message) {
  (message.*assign)(readTextString(value).substr(0, kMaxIdOctets));
}

template <auto create>
void readString(Reader& value, CMMsg& message) {
  readEncodedString(value, *(message.*create)());
}

template <auto list>
void readAddressInto(Reader& value, CMMsg& message) {
  readAddress(value, *(message.*list)()->AddNew());
}

// A message class may also stand as a text, for which the message has no place.
template <class Enumeration, auto setter>
void readOctet(Reader& value, CMMsg& message) {
  const auto octet = value.octet();
  if (octet && *octet >= kShortIntegerBit) (message.*setter)(static_cast<Enumeration>(*octet));
}

// Stores 1 when the octet is `yes`, else 0.
template <auto setter, std::uint8_t yes, bool whenYes>
void readFlag(Reader& value, CMMsg& message) {
  if (const auto octet = value.octet()) (message.*setter)((*octet == yes) == whenYes ? 1 : 0);
}

template <auto getter>
void readTokenDate(Reader& value, CMMsg& message) {
  const auto length = readValueLength(value);
  if (!length) return;
  Reader inside = value.sub(*length);
  inside.skip(1);  // absolute or relative, which makes no difference here
  if (const auto seconds = readInteger(inside)) setDate(*(message.*getter)(), *seconds);
}

void readDate(Reader& value, CMMsg& message) {
  if (const auto seconds = readLongInteger(value)) setDate(*message.GetDate(), *seconds);
}

void readFrom(Reader& value, CMMsg& message) {
  const auto length = readValueLength(value);
  if (!length) return;
  Reader inside = value.sub(*length);
  if (inside.octet() == kAddressPresentToken) readAddress(inside, *message.GetFrom());
}

void readVersion(Reader& value, CMMsg& message) {
  const auto octet = value.octet();
  if (!octet) return;
  message.AssignVersion(versionText(*octet).view());
}

// Writes an enumerated octet unless it is 0, which is unset.
template <std::uint8_t code, auto getter>
void writeOctet(Writer& out, CMMsg& message) {
  const int value = (message.*getter)();
  if (value == 0) return;
  out.octet(onWire(code));
  out.octet(static_cast<std::uint8_t>(value));
}

template <std::uint8_t code, auto getter, std::uint8_t yes, std::uint8_t no>
void writeFlag(Writer& out, CMMsg& message) {
  const int flag = (message.*getter)();
  if (flag == -1) return;
  out.octet(onWire(code));
  out.octet(flag != 0 ? yes : no);
}

template <std::uint8_t code, auto getter>
void writeDate(Writer& out, CMMsg& message) {
  const auto date = dateValue(*(message.*getter)());
  if (!date) return;
  out.octet(onWire(code));
  if constexpr (code == 0x05) {
    writeLongInteger(out, date->seconds);
  } else {
    writeTokenDate(out, *date);
  }
}

// The walk uses and moves the list's cursor.
template <std::uint8_t code, auto list>
void writeAddresses(Writer& out, CMMsg& message) {
  CMMAddrList& addresses = *(message.*list)();
  for (const CMMAddr* address = addresses.First(); address != nullptr; address = addresses.Next()) {
    out.octet(onWire(code));
    writeAddress(out, *address);
  }
}

void writeMessageType(Writer& out, CMMsg& message) {
  out.octet(onWire(0x0C));
  out.octet(static_cast<std::uint8_t>(message.GetMsgType()));
}

void writeTransactionId(Writer& out, CMMsg& message) {
  const char* id = message.GetTransactionId();
  if (id == nullptr) return;
  out.octet(onWire(0x18));
  writeTextString(out, id);
}

void writeMessageId(Writer& out, CMMsg& message) {
  const char* id = message.GetMessageId();
  if (id == nullptr) return;
  out.octet(onWire(0x0B));
  writeTextString(out, id);
}

void writeVersion(Writer& out, CMMsg& message) {
  const auto octet = versionOctet(message.GetVersion());
  if (!octet) return;
  out.octet(onWire(0x0D));
  out.octet(*octet);
}

void writeFrom(Writer& out, CMMsg& message) {
  out.octet(onWire(0x09));
  const std::size_t begin = out.size();
  if (message.GetFrom()->Value()->Text().empty()) {
    out.octet(kInsertAddressToken);
  } else {
    out.octet(kAddressPresentToken);
    writeAddress(out, *message.GetFrom());
  }
  insertValueLength(out, begin);
}

void writeSubject(Writer& out, CMMsg& message) {
  const CMMString* subject = message.GetSubject();
  if (subject == nullptr) return;
  out.octet(onWire(0x16));
  writeEncodedString(out, subject->Text(), subject->Charset());
}

void writeContentTypeField(Writer& out, CMMsg& message) {
  const CMMHdr* header = message.Content()->Headers()->Find(kContentTypeName);
  if (header == nullptr) return;
  out.octet(onWire(kContentTypeField));
  writeContentType(out, *header);
}

// ---- the rows
// ------------------------------------------------------------------------------------

using M = CMMsg;
using Kind = FieldKind;
constexpr auto once = Occurrence::once;
constexpr auto many = Occurrence::many;
constexpr std::span<const OctetName> noOctets{};

constexpr auto kRows = std::to_array<FieldRow>({
    // clang-format off
    {0x01, "Bcc", Kind::address, noOctets, many, readAddressInto<&M::GetBcc>, writeAddresses<0x01, &M::GetBcc>},
    {0x02, "Cc", Kind::address, noOctets, many, readAddressInto<&M::GetCc>, writeAddresses<0x02, &M::GetCc>},
    {0x03, "X-Mms-Content-Location", Kind::text},
    {0x04, "Content-Type", Kind::contentType, noOctets, once, nullptr, writeContentTypeField},
    {0x05, "Date", Kind::date, noOctets, once, readDate, writeDate<0x05, &M::GetDate>},
    {0x06, "X-Mms-Delivery-Report", Kind::octet, kYesNo, once, readFlag<&M::SetDeliveryReport, kYes, true>, writeFlag<0x06, &M::GetDeliveryReport, kYes, kNo>},
    {0x07, "X-Mms-Delivery-Time", Kind::tokenDate, noOctets, once, readTokenDate<&M::GetDeliveryTime>, writeDate<0x07, &M::GetDeliveryTime>},
    {0x08, "X-Mms-Expiry", Kind::tokenDate, noOctets, once, readTokenDate<&M::GetExpiry>, writeDate<0x08, &M::GetExpiry>},
    {0x09, "From", Kind::from, noOctets, once, readFrom, writeFrom},
    {0x0A, "X-Mms-Message-Class", Kind::messageClass, kClasses, once, readOctet<M::MSG_CLASS, &M::SetMessageClass>, writeOctet<0x0A, &M::GetMsgClass>},
    {0x0B, "Message-ID", Kind::text, noOctets, once, readId<&M::AssignMessageId>, writeMessageId},
    {0x0C, "X-Mms-Message-Type", Kind::octet, kMessageTypes, once, readOctet<M::MSG_TYPE, &M::SetMsgType>, writeMessageType},
    {0x0D, "X-Mms-MMS-Version", Kind::version, noOctets, once, readVersion, writeVersion},
    {0x0E, "X-Mms-Message-Size", Kind::longInteger},
    {0x0F, "X-Mms-Priority", Kind::octet, kPriorities, once, readOctet<M::MSG_PRIORITY, &M::SetPriority>, writeOctet<0x0F, &M::GetPriority>},
    {0x10, "X-Mms-Read-Reply", Kind::octet, kYesNo, once, readFlag<&M::SetReadReply, kYes, true>, writeFlag<0x10, &M::GetReadReply, kYes, kNo>},
    {0x11, "X-Mms-Report-Allowed", Kind::octet, kYesNo},
    {0x12, "X-Mms-Response-Status", Kind::octet, kResponseStatuses, once, readOctet<M::MSG_RSPSTATUS, &M::SetResponseStatus>},
    {0x13, "X-Mms-Response-Text", Kind::encodedString, noOctets, once, readString<&M::NewResponseText>},
    {0x14, "X-Mms-Sender-Visibility", Kind::octet, kVisibilities, once, readFlag<&M::SetSenderVisibility, kHide, false>, writeFlag<0x14, &M::GetSenderVisibility, kShow, kHide>},
    {0x15, "X-Mms-Status", Kind::octet, kStatuses},
    {0x16, "Subject", Kind::encodedString, noOctets, once, readString<&M::NewSubject>, writeSubject},
    {0x17, "To", Kind::address, noOctets, many, readAddressInto<&M::GetTo>, writeAddresses<0x17, &M::GetTo>},
    {0x18, "X-Mms-Transaction-Id", Kind::text, noOctets, once, readId<&M::AssignTransactionId>, writeTransactionId},
    {0x19, "X-Mms-Retrieve-Status", Kind::octet, kRetrieveStatuses},
    {0x1A, "X-Mms-Retrieve-Text", Kind::encodedString},
    {0x1B, "X-Mms-Read-Status", Kind::octet, kReadStatuses},
    {0x1C, "X-Mms-Reply-Charging", Kind::octet, kReplyChargings},
    {0x1D, "X-Mms-Reply-Charging-Deadline", Kind::tokenDate},
    {0x1E, "X-Mms-Reply-Charging-ID", Kind::text},
    {0x1F, "X-Mms-Reply-Charging-Size", Kind::longInteger},
    {0x20, "X-Mms-Previously-Sent-By", Kind::previouslySentBy, noOctets, many},
    {0x21, "X-Mms-Previously-Sent-Date", Kind::previouslySentDate, noOctets, many},
    {0x22, "X-Mms-Store", Kind::octet, kYesNo},
    {0x23, "X-Mms-MM-State", Kind::octet, kMmStates, many},
    {0x24, "X-Mms-MM-Flags", Kind::flags, kFlagTokens, many},
    {0x25, "X-Mms-Store-Status", Kind::octet, kStoreStatuses},
    {0x26, "X-Mms-Store-Status-Text", Kind::encodedString},
    {0x27, "X-Mms-Stored", Kind::octet, kYesNo},
    {0x28, "X-Mms-Attributes", Kind::opaque, noOctets, many},
    {0x29, "X-Mms-Totals", Kind::octet, kYesNo},
    {0x2A, "X-Mms-Mbox-Totals", Kind::tokenInteger, kTotalsTokens, many},
    {0x2B, "X-Mms-Quotas", Kind::octet, kYesNo},
    {0x2C, "X-Mms-Mbox-Quotas", Kind::tokenInteger, kTotalsTokens, many},
    {0x2D, "X-Mms-Message-Count", Kind::integer},
    {0x2E, "Content", Kind::opaque, noOctets, many},
    {0x2F, "X-Mms-Start", Kind::integer},
    {0x30, "Additional-headers", Kind::opaque, noOctets, many},
    {0x31, "X-Mms-Distribution-Indicator", Kind::octet, kYesNo},
    {0x32, "X-Mms-Element-Descriptor", Kind::opaque, noOctets, many},
    {0x33, "X-Mms-Limit", Kind::integer},
    {0x34, "X-Mms-Recommended-Retrieval-Mode", Kind::octet, kRetrievalModes},
    {0x35, "X-Mms-Recommended-Retrieval-Mode-Text", Kind::encodedString},
    {0x36, "X-Mms-Status-Text", Kind::encodedString},
    {0x37, "X-Mms-Applic-ID", Kind::text},
    {0x38, "X-Mms-Reply-Applic-ID", Kind::text},
    {0x39, "X-Mms-Aux-Applic-Info", Kind::text},
    {0x3A, "X-Mms-Content-Class", Kind::octet, kContentClasses},
    {0x3B, "X-Mms-DRM-Content", Kind::octet, kYesNo},
    {0x3C, "X-Mms-Adaptation-Allowed", Kind::octet, kYesNo},
    {0x3D, "X-Mms-Replace-ID", Kind::text},
    {0x3E, "X-Mms-Cancel-ID", Kind::text},
    {0x3F, "X-Mms-Cancel-Status", Kind::octet, kCancelStatuses},
    // clang-format on
});

// Looked up by position, so codes must run without a gap.
static_assert([] {
  for (std::size_t i = 0; i < kRows.size(); ++i) {
    if (kRows[i].code != i + 1) return false;
  }
  return kRows.size() == 0x3F;
}());

}  // namespace

std::span<const FieldRow> fieldRows() noexcept {
  return kRows;
}

const FieldRow* findField(std::uint8_t code) noexcept {
  return code >= 1 && code <= kRows.size() ? &kRows[code - 1U] : nullptr;
}

bool fits(FieldKind kind, ValueForm form) noexcept {
  switch (kind) {
    case FieldKind::octet:
    case FieldKind::version:
      return form == ValueForm::shortInteger;
    case FieldKind::messageClass:
      return form == ValueForm::shortInteger || form == ValueForm::text;
    case FieldKind::text:
      return form == ValueForm::text;
    case FieldKind::encodedString:
    case FieldKind::address:
      return form == ValueForm::text || form == ValueForm::lengthPrefixed;
    case FieldKind::integer:
      return form == ValueForm::shortInteger || form == ValueForm::lengthPrefixed;
    case FieldKind::from:
    case FieldKind::longInteger:
    case FieldKind::date:
    case FieldKind::tokenDate:
    case FieldKind::previouslySentBy:
    case FieldKind::previouslySentDate:
    case FieldKind::flags:
    case FieldKind::tokenInteger:
      return form == ValueForm::lengthPrefixed;
    case FieldKind::contentType:
    case FieldKind::opaque:
      return form != ValueForm::none;
  }
  return false;
}

std::string_view octetName(std::span<const OctetName> names, std::uint8_t octet) noexcept {
  const auto found = std::ranges::find(names, octet, &OctetName::octet);
  return found == names.end() ? std::string_view() : found->name;
}

std::span<const OctetName> messageTypeNames() noexcept {
  return kMessageTypes;
}

std::span<const OctetName> responseStatusNames() noexcept {
  return kResponseStatuses;
}

std::span<const OctetName> retrieveStatusNames() noexcept {
  return kRetrieveStatuses;
}

}  // namespace mmsbrix
