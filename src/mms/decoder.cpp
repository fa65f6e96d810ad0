#include "mms/decoder.h"

#include <algorithm>
#include <limits>

#include "mms/content_type.h"
#include "mms/field_table.h"
#include "wsp/header_walker.h"
#include "wsp/multipart_walker.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {
namespace {

void setContent(CMMPart& part, Octets data) {
  // A part counts its content in an int.
  constexpr std::size_t kMost = std::numeric_limits<int>::max() - 1;
  part.SetContent(data.data() == nullptr ? reinterpret_cast<const std::uint8_t*>("") : data.data(),
                  static_cast<int>(std::min(data.size(), kMost)));
}

void readField(const HeaderItem& item, CMMsg& message, ItemBudget& budget) {
  if (item.page != kFirstPage) return;
  if (item.code == kContentTypeField) {
    readContentType(item.value, *message.Content()->Headers()->AddNew(), budget);
    return;
  }
  const FieldRow* row = findField(item.code);
  if (row == nullptr || row->read == nullptr || !fits(row->kind, item.form)) return;
  Reader value(item.value);
  row->read(value, message);
}

// An application header is kept under its name less the first character.
void readTextHeader(const HeaderItem& item, CMMsg& message) {
  Reader value(item.value);
  message.Content()->Headers()->AddNew()->Assign(item.name.substr(1), readTextString(value));
}

// The octets of the header block.
std::size_t readHeaderBlock(Octets pdu, CMMsg& message, ItemBudget& budget) {
  HeaderWalker walker(pdu, kMessageBlock);
  HeaderItem item;
  while (walker.next(item)) {
    if (item.kind == HeaderItem::Kind::wellKnown) {
      // The content type leads to the body, so it is read however many fields came before.
      if (budget.take() || item.code == kContentTypeField) readField(item, message, budget);
    } else if (item.kind == HeaderItem::Kind::text && budget.take()) {
      readTextHeader(item, message);
    }
  }
  return walker.position();
}

void readPart(const MultipartItem& item, CMMPart& part, ItemBudget& budget) {
  if (!item.contentType.empty()) {
    readContentType(item.contentType, *part.Headers()->AddNew(), budget);
  }
  HeaderWalker walker(item.headers);
  HeaderItem header;
  while (walker.next(header)) {
    if (partHeaderName(header).empty() || !budget.take()) continue;
    CMMHdr read;
    if (readPartHeaderValue(header, read, budget)) *part.Headers()->AddNew() = std::move(read);
  }
  setContent(part, item.data);
}

}  // namespace

void decodeMultipart(Octets body, CMMPart& root, ItemBudget& budget) {
  MultipartWalker walker(body);
  MultipartItem item;
  while (walker.next(item) && budget.take()) readPart(item, *root.NewChild(), budget);
}

void decodeMessage(Octets pdu, CMMsg& message) {
  message.Clear();
  ItemBudget budget;
  const std::size_t headerLength = readHeaderBlock(pdu, message, budget);
  const CMMsg::MSG_TYPE type = message.GetMsgType();
  if (type != CMMsg::MSG_TYPE_SEND_REQ && type != CMMsg::MSG_TYPE_RETRIEVE_CONF) return;
  CMMPart& root = *message.Content();
  const CMMHdr* contentType = root.Headers()->Find(kContentTypeName);
  if (contentType == nullptr) return;
  const Octets body = pdu.subspan(headerLength);
  if (isMultipart(contentType->Value())) {
    decodeMultipart(body, root, budget);
  } else {
    setContent(root, body);
  }
}

}  // namespace mmsbrix
