#include "mms/encoder.h"

#include <array>
#include <cstdint>
#include <cstring>

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

// The most that values can take, so that the buffer is allocated once.

std::size_t mostOf(const CMMHdr& header) noexcept {
  constexpr std::size_t kForms = 16;  // lengths, quotes, terminating zeros
  std::size_t octets = kForms + header.Name().size() + header.Value().size();
  for (const CMMParam& parameter : *header.Params()) {
    octets += kForms + parameter.Name().size() + parameter.Value().size();
  }
  return octets;
}

std::size_t mostOf(const CMMHdrList& headers) noexcept {
  std::size_t octets = 0;
  for (const CMMHdr& header : headers) octets += mostOf(header);
  return octets;
}

std::size_t mostOf(const CMMAddrList& addresses) noexcept {
  constexpr std::size_t kForms = 32;  // code, length, charset, suffix
  std::size_t octets = 0;
  for (const CMMAddr& address : addresses) octets += kForms + address.Value()->Text().size();
  return octets;
}

std::size_t mostOfMessage(CMMsg& message) noexcept {
  constexpr std::size_t kFields = 192;  // the other fields, with their codes and lengths
  const CMMPart& root = *message.Content();
  std::size_t octets = kFields + message.GetFrom()->Value()->Text().size();
  if (const char* id = message.GetTransactionId()) octets += std::strlen(id);
  if (const CMMString* subject = message.GetSubject()) octets += subject->Text().size();
  octets += mostOf(*message.GetTo()) + mostOf(*message.GetCc()) + mostOf(*message.GetBcc());
  octets += mostOf(*root.Headers()) + contentOf(root).size();
  for (unsigned i = 0; i < root.ChildCount(); ++i) {
    const CMMPart& part = *root.Child(i);
    octets += 2 * kMaxUintvarOctets + mostOf(*part.Headers()) + contentOf(part).size();
  }
  return octets;
}

}  // namespace

bool encodeMessage(Writer& out, CMMsg& message) {
  if (message.GetMsgType() != CMMsg::MSG_TYPE_SEND_REQ) return true;
  out.reserve(mostOfMessage(message));
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
