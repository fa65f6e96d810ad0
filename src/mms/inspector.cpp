#include "mms/inspector.h"

#include <algorithm>
#include <array>

#include "mms/charsets.h"
#include "mms/content_type.h"
#include "mms/field_table.h"
#include "mms/field_values.h"
#include "mms/item_cost.h"
#include "mms/pdu_rules.h"
#include "wsp/header_walker.h"
#include "wsp/multipart_walker.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {
namespace {

constexpr int kMaxNesting = 16;  // multiparts opened inside multiparts
constexpr std::uint8_t kMessageType = 0x0C;
constexpr std::uint8_t kTransactionId = 0x18;
constexpr std::uint8_t kVersion = 0x0D;

bool hasBody(int messageType) noexcept {
  return messageType == CMMsg::MSG_TYPE_SEND_REQ || messageType == CMMsg::MSG_TYPE_RETRIEVE_CONF;
}

std::string countText(std::size_t count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

class Inspector {
 public:
  explicit Inspector(Octets pdu) : pdu_(pdu) { result_.size = pdu.size(); }

  Inspection run() {
    lookAtBeginning();
    readHeaderBlock();
    checkOrder();
    checkPresence();
    readBody();
    if (tooMany_ || budget_.exhausted() || remarkBudget_.exhausted()) {
      result_.remarks.push_back(
          {RemarkKind::tooMany, 0,
           "more fields, headers, parts or remarks than are kept: the others are left out"});
    }
    std::ranges::stable_sort(result_.remarks, {}, &Remark::offset);
    return std::move(result_);
  }

 private:
  void remark(RemarkKind kind, std::size_t offset, std::string text) {
    if (remarkBudget_.take(0)) result_.remarks.push_back({kind, offset, std::move(text)});
  }

  void lookAtBeginning() {
    constexpr auto kCrashPattern = std::to_array<std::uint8_t>({0x8C, 0x82, 0x89, 0x40});
    if (pdu_.empty()) {
      remark(RemarkKind::notMms, 0, "there is nothing");
    } else if (pdu_.front() != (kMessageType | 0x80)) {
      remark(RemarkKind::notMms, 0,
             "an MMS PDU begins with its message type, 0x8C, not with " + octetText(pdu_.front()));
    }
    if (pdu_.size() >= kCrashPattern.size() &&
        std::equal(kCrashPattern.begin(), kCrashPattern.end(), pdu_.begin())) {
      remark(RemarkKind::crashPattern, 0, "8C 82 89 40: these octets have crashed decoders");
    }
  }

  void readHeaderBlock() {
    HeaderWalker walker(pdu_, kMessageBlock);
    HeaderItem item;
    while (walker.next(item)) readItem(item, walker.broken());
    result_.headerLength = walker.position();
    if (walker.broken() && walker.position() < pdu_.size()) {
      remark(RemarkKind::trailingOctets, walker.position(),
             countText(pdu_.size() - walker.position(), "octet") + " behind the broken field");
    }
    // Of several message types the last one counts, as it does when decoding.
    for (const InspectedField& field : result_.fields) {
      if (field.code == kMessageType && field.page == kFirstPage && field.number) {
        result_.messageType = static_cast<int>(*field.number);
      }
    }
    result_.messageTypeName = messageTypeName(result_.messageType);
  }

  // Stray zeros and page shifts are no fields; they only make remarks.
  void readItem(const HeaderItem& item, bool broken) {
    if (item.kind == HeaderItem::Kind::zero) {
      if (zeroRun_ != item.offset) {
        remark(RemarkKind::strayZero, item.offset, "a zero octet where a field should begin");
      }
      zeroRun_ = item.offset + 1;
    } else if (item.kind == HeaderItem::Kind::shift) {
      remark(RemarkKind::codePage, item.offset,
             item.cutShort() ? "a page shift without its page"
                             : "shift to header code page " + std::to_string(item.page));
    } else if (!budget_.take(fieldCost(item, textHeaders_)) && item.code != kContentTypeField) {
      tooMany_ = true;
    } else {
      if (item.kind == HeaderItem::Kind::text) ++textHeaders_;
      result_.fields.push_back(describeField(item));
      remarkOnExtent(item, broken, result_.fields.back().name, 0);
    }
  }

  InspectedField describeField(const HeaderItem& item) {
    InspectedField field;
    field.offset = item.offset;
    field.length = item.end() - item.offset;
    field.valueOffset = item.valueOffset;
    field.page = item.page;
    field.form = item.form;
    if (item.kind == HeaderItem::Kind::text) {
      Reader value(item.value);
      field.name = toUtf8(item.name, "").value_or("");
      field.text = readTextString(value);
      field.value = toUtf8(*field.text, "").value_or("");
      return field;
    }
    field.code = item.code;
    const FieldRow* row = item.page == kFirstPage ? findField(item.code) : nullptr;
    field.name = row != nullptr
                     ? std::string(row->name)
                     : "field " + octetText(item.code) +
                           (item.page == kFirstPage ? "" : " of page " + std::to_string(item.page));
    if (row == nullptr) {
      field.value = hexText(item.value);
      if (item.page == kFirstPage) {
        remark(RemarkKind::unknownField, item.offset, field.name + " is not assigned");
      }
    } else if (item.form == ValueForm::none) {
      // Told with the extent.
    } else if (!fits(row->kind, item.form)) {
      field.value = hexText(item.value);
      remark(RemarkKind::wrongForm, item.valueOffset,
             field.name + " has a value of another form: " + field.value);
    } else if (const std::string wrong = describeValue(*row, item, field, budget_);
               !wrong.empty()) {
      remark(RemarkKind::badValue, item.valueOffset, field.name + ": " + wrong);
    }
    return field;
  }

  // What is wrong with how far a field or header reaches.  `base` is added to the item's offsets.
  void remarkOnExtent(const HeaderItem& item, bool broken, const std::string& name,
                      std::size_t base) {
    const std::size_t offset = base + item.valueOffset;
    if (item.form == ValueForm::none) {
      remark(RemarkKind::truncated, offset, name + " ends before its value");
    } else if (broken && item.statedSize == 0) {
      remark(RemarkKind::badValue, offset, name + " has a length that cannot be read");
    } else if (item.cutShort()) {
      if (item.form == ValueForm::lengthPrefixed && item.kind == HeaderItem::Kind::wellKnown) {
        remark(RemarkKind::lengthPastEnd, offset,
               name + " claims " + countText(item.statedSize, "octet") + ", " +
                   std::to_string(item.value.size()) + " are there");
      } else {
        remark(RemarkKind::missingZero, offset, name + " lacks its terminating zero octet");
      }
    }
  }

  void checkOrder() {
    // The fields that lead, in their order, as far as they are there.
    constexpr std::array<int, 3> kLeading = {kMessageType, kTransactionId, kVersion};
    std::vector<int> due;
    for (const int code : kLeading) {
      if (result_.find(code) != nullptr) due.push_back(code);
    }
    for (std::size_t i = 0; i < due.size() && i < result_.fields.size(); ++i) {
      const InspectedField& field = result_.fields[i];
      if (field.code == due[i] && field.page == kFirstPage) continue;
      remark(RemarkKind::order, field.offset,
             field.name + " stands where " +
                 std::string(findField(static_cast<std::uint8_t>(due[i]))->name) + " should");
      break;
    }
  }

  void checkPresence() {
    std::uint64_t seen = 0;
    const PduRule* rule = findPduRule(result_.messageType);
    for (const InspectedField& field : result_.fields) {
      if (field.code <= 0 || field.code > 0x3F || field.page != kFirstPage) continue;
      const std::uint64_t bit = fieldBit(field.code);
      const FieldRow& row = *findField(static_cast<std::uint8_t>(field.code));
      if ((seen & bit) != 0 && row.occurrence == Occurrence::once) {
        remark(RemarkKind::duplicate, field.offset, field.name + " stands a second time");
      }
      if (rule != nullptr && ((rule->required | rule->optional) & bit) == 0) {
        remark(RemarkKind::unexpectedField, field.offset,
               field.name + " has no place in an " + result_.messageTypeName);
      }
      seen |= bit;
    }
    if (rule == nullptr) return;
    for (const FieldRow& row : fieldRows()) {
      if ((rule->required & ~seen & fieldBit(row.code)) != 0) {
        remark(RemarkKind::missingField, result_.headerLength,
               std::string(row.name) + " is missing");
      }
    }
    if (rule->needsRecipient && (seen & kRecipientFields) == 0) {
      remark(RemarkKind::missingField, result_.headerLength, "there is no recipient (To, Cc, Bcc)");
    }
  }

  void readBody() {
    const std::size_t left = pdu_.size() - result_.headerLength;
    const InspectedField* contentType = result_.find(kContentTypeField);
    result_.bodyOffset = result_.headerLength;
    if (contentType == nullptr) return;
    if (!hasBody(result_.messageType)) {
      if (left > 0) {
        remark(RemarkKind::trailingOctets, result_.headerLength,
               countText(left, "octet") + " behind the last field");
      }
      return;
    }
    result_.bodyLength = left;
    budget_.setAside(left);
    result_.multipart = namesMultipart(contentType->text.value_or(""));
    if (result_.multipart) {
      result_.parts = readParts(pdu_.subspan(result_.bodyOffset), result_.bodyOffset, 1);
    }
  }

  std::vector<InspectedPart> readParts(Octets body, std::size_t base, int depth) {
    std::vector<InspectedPart> parts;
    MultipartWalker walker(body);
    MultipartItem item;
    while (walker.next(item)) {
      if (!budget_.take(partCost(item))) {
        tooMany_ = true;
        return parts;
      }
      parts.push_back(describePart(item, base, depth));
    }
    if (body.empty()) {
      remark(RemarkKind::truncated, base, "the multipart body is missing");
    } else if (walker.broken()) {
      remark(RemarkKind::trailingOctets, base + walker.position(),
             countText(body.size() - walker.position(), "octet") +
                 " that are no part: a length cannot be read");
    } else if (walker.announced() != parts.size()) {
      remark(RemarkKind::countMismatch, base,
             countText(walker.announced(), "part") + " announced, " + std::to_string(parts.size()) +
                 " there");
    }
    return parts;
  }

  InspectedPart describePart(const MultipartItem& item, std::size_t base, int depth) {
    InspectedPart part;
    part.offset = base + item.offset;
    part.headersOffset = base + item.headersOffset;
    part.headersLength = item.contentType.size() + item.headers.size();
    part.dataOffset = base + item.dataOffset;
    part.dataLength = item.data.size();
    part.statedDataLength = item.statedData;
    if (part.headersLength < item.statedHeaders) {
      remark(RemarkKind::lengthPastEnd, part.offset,
             "a part claims " + countText(item.statedHeaders, "octet") + " of headers, " +
                 std::to_string(part.headersLength) + " are there");
    } else if (part.dataLength < item.statedData) {
      remark(RemarkKind::lengthPastEnd, part.offset,
             "a part claims " + countText(item.statedData, "octet") + " of data, " +
                 std::to_string(part.dataLength) + " are there");
    }
    readPartContentType(item.contentType, part);
    readPartHeaders(item.headers, part.headersOffset + item.contentType.size(),
                    headersForeseen(item), part);
    if (namesMultipart(part.contentType) && depth < kMaxNesting) {
      part.parts = readParts(item.data, part.dataOffset, depth + 1);
    }
    return part;
  }

  void readPartContentType(Octets value, InspectedPart& part) {
    const FieldRow& row = *findField(kContentTypeField);
    HeaderItem item;
    item.value = value;
    item.form = formOf(value);
    InspectedField field;
    const std::string wrong =
        value.empty() ? "there is no content type" : describeValue(row, item, field, budget_);
    if (!wrong.empty()) remark(RemarkKind::badValue, part.headersOffset, "a part: " + wrong);
    part.contentType = field.text.value_or("");
    part.parameters = std::move(field.parameters);
  }

  void readPartHeaders(Octets headers, std::size_t base, std::size_t foreseen,
                       InspectedPart& part) {
    HeaderWalker walker(headers);
    HeaderItem item;
    while (walker.next(item)) {
      if (item.kind == HeaderItem::Kind::zero || item.kind == HeaderItem::Kind::shift) {
        const bool zero = item.kind == HeaderItem::Kind::zero;
        remark(zero ? RemarkKind::strayZero : RemarkKind::codePage, base + item.offset,
               zero ? "a zero octet where a part's header should begin"
                    : "shift to header code page " + std::to_string(item.page));
        continue;
      }
      if (!budget_.take(partHeaderCost(item, 1 + part.headers.size(), foreseen))) {
        tooMany_ = true;
        return;
      }
      part.headers.push_back(describePartHeader(item, base));
      remarkOnExtent(item, walker.broken(), part.headers.back().name, base);
    }
  }

  InspectedHeader describePartHeader(const HeaderItem& item, std::size_t base) {
    InspectedHeader header;
    header.offset = base + item.offset;
    header.length = item.end() - item.offset;
    header.code = item.kind == HeaderItem::Kind::wellKnown ? item.code : -1;
    header.page = item.page;
    const std::string_view name = partHeaderName(item);
    CMMHdr read;
    if (!name.empty() && readPartHeaderValue(item, name, read, budget_)) {
      header.name = name;
      header.value = read.Value();
      for (const CMMParam& parameter : *read.Params()) {
        header.parameters.push_back(
            {std::string(parameter.Name()), std::string(parameter.Value())});
      }
      return header;
    }
    header.name = name.empty() ? "header " + octetText(item.code) : std::string(name);
    header.value = hexText(item.value);
    if (item.form != ValueForm::none) {
      remark(name.empty() ? RemarkKind::unknownField : RemarkKind::wrongForm, header.offset,
             header.name + (name.empty() ? " of a part is not assigned"
                                         : " of a part has a value that is not understood"));
    }
    return header;
  }

  Octets pdu_;
  Inspection result_;
  ItemBudget budget_{pdu_.size()};  // of fields, headers, parameters and parts
  ItemBudget remarkBudget_;         // of remarks
  bool tooMany_ = false;
  std::size_t textHeaders_ = 0;
  std::size_t zeroRun_ = static_cast<std::size_t>(-1);  // where the present run of zeros goes on
};

}  // namespace

Inspection inspect(const void* data, std::size_t size) {
  const auto* octets = static_cast<const std::uint8_t*>(data);
  return Inspector(Octets(octets, data == nullptr ? 0 : size)).run();
}

std::string messageTypeName(int type) {
  const bool octet = type >= 0 && type <= 0xFF;
  return octet ? std::string(octetName(messageTypeNames(), static_cast<std::uint8_t>(type)))
               : std::string();
}

std::string responseStatusName(int status) {
  const bool octet = status >= 0 && status <= 0xFF;
  return octet ? std::string(octetName(responseStatusNames(), static_cast<std::uint8_t>(status)))
               : std::string();
}

std::string retrieveStatusName(int status) {
  const bool octet = status >= 0 && status <= 0xFF;
  return octet ? std::string(octetName(retrieveStatusNames(), static_cast<std::uint8_t>(status)))
               : std::string();
}

}  // namespace mmsbrix
