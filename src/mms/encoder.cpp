#include "mms/encoder.h"

#include <array>
#include <cstdint>

#include "mms/content_type.h"
#include "mms/field_table.h"
#include "platform/ascii.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {
namespace {

// The order in which fields go out: type, transaction id and version lead, the content type ends.
constexpr auto kWritingOrder =
    std::to_array<std::uint8_t>({0x0C, 0x18, 0x0D, 0x05, 0x09, 0x17, 0x02, 0x01, 0x16, 0x06, 0x14,
                                 0x10, 0x0A, 0x08, 0x07, 0x0F, kContentTypeField});

Octets contentOf(const CMMPart& part) noexcept {
  return {part.GetContent(), static_cast<std::size_t>(part.GetContentLen())};
}

// Writes one entry of a multipart; false, with nothing written, for a part that cannot be one.
bool writeEntry(Writer& out, CMMPart& part) {
  CMMHdrList& headers = *part.Headers();
  const CMMHdr* contentType = headers.Find(kContentTypeName);
  if (part.GetContent() == nullptr || contentType == nullptr) return false;
  const std::size_t begin = out.size();
  writeContentType(out, *contentType);
  for (const CMMHdr& header : headers) {
    if (!equalsIgnoringCase(header.Name(), kContentTypeName)) writePartHeader(out, header);
  }
  std::uint8_t lengths[2 * kMaxUintvarOctets];
  std::size_t octets = encodeUintvar(static_cast<std::uint32_t>(out.size() - begin), lengths);
  octets += encodeUintvar(static_cast<std::uint32_t>(part.GetContentLen()), lengths + octets);
  out.insert(begin, Octets(lengths, octets));
  out.append(contentOf(part));
  return true;
}

bool writeMultipart(Writer& out, CMMPart& root) {
  writeUintvar(out, root.ChildCount());
  for (CMMPart* child = root.FirstChild(); child != nullptr; child = root.NextChild()) {
    if (!writeEntry(out, *child)) return false;
  }
  return true;
}

// About what the message takes, a little too much rather than too little, so that the contents are
// copied once and the buffer seldom grows.
std::size_t estimatedSize(CMMsg& message) noexcept {
  constexpr std::size_t kFieldsAllowance = 512;
  constexpr std::size_t kHeadersAllowance = 192;
  const CMMPart& root = *message.Content();
  std::size_t size = kFieldsAllowance + static_cast<std::size_t>(root.GetContentLen());
  for (unsigned i = 0; i < root.ChildCount(); ++i) {
    size += kHeadersAllowance + static_cast<std::size_t>(root.Child(i)->GetContentLen());
  }
  return size;
}

}  // namespace

bool encodeMessage(Writer& out, CMMsg& message) {
  if (message.GetMsgType() != CMMsg::MSG_TYPE_SEND_REQ) return true;
  out.reserve(estimatedSize(message));
  for (const std::uint8_t code : kWritingOrder) findField(code)->write(out, message);
  CMMPart& root = *message.Content();
  const CMMHdr* contentType = root.Headers()->Find(kContentTypeName);
  if (contentType != nullptr && isMultipart(contentType->Value())) {
    return writeMultipart(out, root);
  }
  out.append(contentOf(root));
  return true;
}

}  // namespace mmsbrix
