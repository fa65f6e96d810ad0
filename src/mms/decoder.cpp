#include "mms/decoder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <new>

#include "mms/content_type.h"
#include "mms/field_table.h"
#include "mms/item_cost.h"
#include "wsp/header_walker.h"
#include "wsp/multipart_walker.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {
namespace {

// A part counts its content in an int.
Octets asContent(Octets data) noexcept {
  constexpr std::size_t kMost = std::numeric_limits<int>::max() - 1;
  return data.first(std::min(data.size(), kMost));
}

// Copies contents into one block for all of them.
class CopiedContents {
 public:
  // Room for contents of so many octets in all, a zero behind each of them included.
  CopiedContents(std::size_t octets, ItemBudget& budget) : block_(ContentBlock::create(octets)) {
    if (block_ == nullptr) throw std::bad_alloc();
    budget.setAside(sizeof(ContentBlock) + octets);
  }
  void place(Octets data, CMMPart& part) {
    data = asContent(data);
    if (data.empty()) {
      part.SetContent("", 0);
      return;
    }
    std::memcpy(block_->octets() + used_, data.data(), data.size());
    block_->octets()[used_ + data.size()] = 0;
    part.ShareContent(*block_, used_, static_cast<int>(data.size()));
    used_ += data.size() + 1;
  }

 private:
  ContentBlock::Holder block_;
  std::size_t used_ = 0;
};

// Leaves contents in the block that the PDU lies in.  Behind a content stands what is read next, so
// its zero is written once that has been done.
class SharedContents {
 public:
  explicit SharedContents(ContentBlock& block) noexcept : block_(block) {}
  SharedContents(const SharedContents&) = delete;
  SharedContents& operator=(const SharedContents&) = delete;
  ~SharedContents() { writeZero(); }

  void place(Octets data, CMMPart& part) {
    writeZero();
    data = asContent(data);
    if (data.empty()) {
      part.SetContent("", 0);
      return;
    }
    const auto offset = static_cast<std::size_t>(data.data() - block_.octets());
    part.ShareContent(block_, offset, static_cast<int>(data.size()));
    end_ = block_.octets() + offset + data.size();
  }

 private:
  void writeZero() noexcept {
    if (end_ != nullptr) *end_ = 0;
    end_ = nullptr;
  }

  ContentBlock& block_;
  std::uint8_t* end_ = nullptr;
};

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
  message.Content()->Headers()->AddNew()->Assign(ZeroFreeText{item.name.substr(1)},
                                                 ZeroFreeText{readTextString(value)});
}

// Makes room for the recipients among this field and those behind it, each list at once.
void makeRoomForRecipients(const HeaderItem& field, HeaderWalker walker, CMMsg& message,
                           ItemBudget& budget) {
  const std::size_t room = budget.roomFor(sizeof(CMMAddr));
  std::array<std::uint32_t, 128> counts{};
  HeaderItem item = field;
  for (std::size_t fields = 0;; ++fields) {
    if (fields == room) {
      budget.limit(room);
      break;
    }
    if (item.kind == HeaderItem::Kind::wellKnown) ++counts[item.code & 0x7F];
    if (!walker.next(item)) break;
  }
  const auto reserve = [&](CMMAddrList& list, std::uint8_t code) {
    if (counts[code] == 0) return;
    list.Reserve(list.Count() + counts[code]);
    budget.setAside(counts[code] * sizeof(CMMAddr));
  };
  reserve(*message.GetTo(), kToField);
  reserve(*message.GetCc(), kCcField);
  reserve(*message.GetBcc(), kBccField);
}

// The octets of the header block.
std::size_t readHeaderBlock(Octets pdu, CMMsg& message, ItemBudget& budget) {
  HeaderWalker walker(pdu, kMessageBlock);
  HeaderItem item;
  std::size_t fields = 0;
  std::size_t headers = 0;
  while (walker.next(item)) {
    if (++fields == kLongList) makeRoomForRecipients(item, walker, message, budget);
    if (item.kind == HeaderItem::Kind::wellKnown) {
      // The content type leads to the body, so it is read however many fields came before.
      if (budget.take(fieldCost(item, headers)) || item.code == kContentTypeField) {
        readField(item, message, budget);
      }
    } else if (item.kind == HeaderItem::Kind::text && budget.take(fieldCost(item, headers))) {
      readTextHeader(item, message);
      ++headers;
    }
  }
  return walker.position();
}

void readPartHeaders(const MultipartItem& item, CMMPart& part, ItemBudget& budget) {
  const std::size_t foreseen = headersForeseen(item);
  std::size_t kept = 0;
  if (!item.contentType.empty()) {
    part.Headers()->Reserve(static_cast<std::uint32_t>(foreseen));
    readContentType(item.contentType, *part.Headers()->AddNew(), budget);
    ++kept;
  }
  HeaderWalker walker(item.headers);
  HeaderItem header;
  while (walker.next(header)) {
    const std::string_view name = partHeaderName(header);
    if (name.empty()) continue;
    if (!budget.take(partHeaderCost(header, kept, foreseen))) continue;
    if (readPartHeaderValue(header, name, *part.Headers()->AddNew(), budget)) {
      ++kept;
    } else {
      part.Headers()->DropLast();
    }
  }
}

// Makes room for the part behind the walker and all that follow it.
void makeRoomForParts(MultipartWalker walker, CMMPart& root, ItemBudget& budget) {
  const std::size_t room = budget.roomFor(sizeof(CMMPart));
  std::size_t count = 0;
  std::size_t dataOctets = 0;
  while (count < room && walker.skip(dataOctets)) ++count;
  if (count == room) budget.limit(room);
  root.ReserveChildren(root.ChildCount() + static_cast<unsigned>(count));
  budget.setAside(count * sizeof(CMMPart));
}

template <class Contents>
void readParts(Octets body, CMMPart& root, Contents& contents, ItemBudget& budget) {
  MultipartWalker walker(body);
  // What is announced is believed as far as it can be true, and for so many parts.
  constexpr std::size_t kOctetsOfAPart = 16;
  root.ReserveChildren(static_cast<unsigned>(
      std::min<std::size_t>({walker.announced(), body.size() / kOctetsOfAPart, kLongList})));
  MultipartItem item;
  for (std::size_t parts = 0;; ++parts) {
    if (parts == kLongList) makeRoomForParts(walker, root, budget);
    if (!walker.next(item) || !budget.take(partCost(item))) break;
    CMMPart& part = *root.NewChild();
    readPartHeaders(item, part, budget);
    contents.place(item.data, part);
  }
}

// True when the message, whose fields have been read, has a body.
bool hasBody(CMMsg& message) noexcept {
  const CMMsg::MSG_TYPE type = message.GetMsgType();
  if (type != CMMsg::MSG_TYPE_SEND_REQ && type != CMMsg::MSG_TYPE_RETRIEVE_CONF) return false;
  return message.Content()->Headers()->Find(kContentTypeName) != nullptr;
}

bool holdsParts(CMMPart& root) noexcept {
  return isMultipart(root.Headers()->Find(kContentTypeName)->Value());
}

// Octets of all contents of a multipart body, with a zero behind each.
std::size_t contentsOf(Octets body) noexcept {
  std::size_t octets = 0;
  MultipartWalker walker(body);
  std::size_t content = 0;
  while (walker.skip(content)) {
    if (content > 0) octets += content + 1;
  }
  return octets;
}

}  // namespace

void decodeMultipart(Octets body, CMMPart& root, ItemBudget& budget) {
  CopiedContents contents(contentsOf(body), budget);
  readParts(body, root, contents, budget);
}

void decodeMessage(Octets pdu, CMMsg& message) {
  message.Clear();
  ItemBudget budget(pdu.size());
  const Octets body = pdu.subspan(readHeaderBlock(pdu, message, budget));
  if (!hasBody(message)) return;
  CMMPart& root = *message.Content();
  if (holdsParts(root)) return decodeMultipart(body, root, budget);
  CopiedContents(body.size() + 1, budget).place(body, root);
}

void decodeMessage(ContentBlock& block, std::size_t size, CMMsg& message) {
  message.Clear();
  const Octets pdu(block.octets(), size);
  ItemBudget budget(size);
  const Octets body = pdu.subspan(readHeaderBlock(pdu, message, budget));
  if (!hasBody(message)) return;
  CMMPart& root = *message.Content();
  SharedContents contents(block);
  if (holdsParts(root)) {
    readParts(body, root, contents, budget);
  } else {
    contents.place(body, root);
  }
}

}  // namespace mmsbrix
