#include "mms/decoder.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "mms/content_type.h"
#include "mms/field_table.h"
#include "wsp/header_walker.h"
#include "wsp/multipart_walker.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {
namespace {

// Makes octets of the block the content of a part.  Returns where the zero behind them belongs;
// null for none.
std::uint8_t* shareContent(ContentBlock& block, Octets data, CMMPart& part) {
  // A part counts its content in an int.
  constexpr std::size_t kMost = std::numeric_limits<int>::max() - 1;
  const std::size_t octets = std::min(data.size(), kMost);
  if (octets == 0) {
    part.SetContent("", 0);
    return nullptr;
  }
  const auto offset = static_cast<std::size_t>(data.data() - block.octets());
  part.ShareContent(block, offset, static_cast<int>(octets));
  return block.octets() + offset + octets;
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

void readPartHeaders(const MultipartItem& item, CMMPart& part, ItemBudget& budget) {
  // A header takes twelve octets or more as phones write them.
  constexpr std::size_t kOctetsOfAHeader = 12;
  constexpr std::size_t kMostReserved = 4;
  if (!item.contentType.empty()) {
    part.Headers()->Reserve(static_cast<std::uint32_t>(
        std::min(1 + item.headers.size() / kOctetsOfAHeader, kMostReserved)));
    readContentType(item.contentType, *part.Headers()->AddNew(), budget);
  }
  HeaderWalker walker(item.headers);
  HeaderItem header;
  while (walker.next(header)) {
    const std::string_view name = partHeaderName(header);
    if (name.empty() || !budget.take()) continue;
    if (!readPartHeaderValue(header, name, *part.Headers()->AddNew(), budget)) {
      part.Headers()->DropLast();
    }
  }
}

void readParts(ContentBlock& block, Octets body, CMMPart& root, ItemBudget& budget) {
  MultipartWalker walker(body);
  // What is announced is believed as far as it can be true of parts with headers.
  constexpr std::size_t kOctetsOfAPart = 16;
  constexpr std::size_t kMostReserved = 1024;
  root.ReserveChildren(static_cast<unsigned>(
      std::min<std::size_t>({walker.announced(), body.size() / kOctetsOfAPart, kMostReserved})));
  // Behind a content stands the next entry's first octet, which has to be read before it becomes a
  // zero.
  std::uint8_t* end = nullptr;
  MultipartItem item;
  while (walker.next(item) && budget.take()) {
    if (end != nullptr) *end = 0;
    CMMPart& part = *root.NewChild();
    readPartHeaders(item, part, budget);
    end = shareContent(block, item.data, part);
  }
  if (end != nullptr) *end = 0;
}

// True when the message, whose fields have been read, has a body.
bool hasBody(CMMsg& message) noexcept {
  const CMMsg::MSG_TYPE type = message.GetMsgType();
  if (type != CMMsg::MSG_TYPE_SEND_REQ && type != CMMsg::MSG_TYPE_RETRIEVE_CONF) return false;
  return message.Content()->Headers()->Find(kContentTypeName) != nullptr;
}

void readBody(ContentBlock& block, Octets body, CMMsg& message, ItemBudget& budget) {
  CMMPart& root = *message.Content();
  if (isMultipart(root.Headers()->Find(kContentTypeName)->Value())) {
    readParts(block, body, root, budget);
  } else if (std::uint8_t* const end = shareContent(block, body, root)) {
    *end = 0;
  }
}

ContentBlock::Holder copyOf(Octets octets) {
  ContentBlock::Holder block = ContentBlock::create(octets.size());
  if (block == nullptr) throw std::bad_alloc();
  if (!octets.empty()) std::memcpy(block->octets(), octets.data(), octets.size());
  return block;
}

}  // namespace

void decodeMultipart(Octets body, CMMPart& root, ItemBudget& budget) {
  const ContentBlock::Holder block = copyOf(body);
  readParts(*block, {block->octets(), body.size()}, root, budget);
}

void decodeMessage(Octets pdu, CMMsg& message) {
  message.Clear();
  ItemBudget budget(pdu.size());
  const Octets body = pdu.subspan(readHeaderBlock(pdu, message, budget));
  if (!hasBody(message)) return;
  const ContentBlock::Holder block = copyOf(body);
  readBody(*block, {block->octets(), body.size()}, message, budget);
}

void decodeMessage(ContentBlock& block, std::size_t size, CMMsg& message) {
  message.Clear();
  const Octets pdu(block.octets(), size);
  ItemBudget budget(size);
  const Octets body = pdu.subspan(readHeaderBlock(pdu, message, budget));
  if (hasBody(message)) readBody(block, body, message, budget);
}

}  // namespace mmsbrix
