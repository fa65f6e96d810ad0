// The codec of messages, the inspector beside it, and extraction.
#include <cstring>
#include <filesystem>
#include <memory>

#include "convert/extraction.h"
#include "convert/mmsconvert.h"
#include "mms/content_type.h"
#include "mms/inspector.h"
#include "mms/mmscodec.h"
#include "platform/ascii.h"
#include "platform/files.h"
#include "support/parse_errors.h"
#include "support/temporary_folder.h"
#include "targets.h"
#include "wsp/header_walker.h"

namespace mmsbrix::fuzz {
namespace {

struct Encoded {
  int result = 0;
  std::string octets;
};

Encoded encode(CMMsg& message) {
  void* data = nullptr;
  unsigned size = 0;
  Encoded encoded;
  encoded.result = MMS_SaveToMemory(&message, &data, &size, 0);
  encoded.octets.assign(static_cast<const char*>(data), size);
  MMS_Free(data);
  return encoded;
}

void decode(Input input, CMMsg& message) {
  const int result =
      MMS_LoadFromMemory(input.data(), static_cast<unsigned>(input.size()), &message, 0);
  require(result == 1, "decoding never fails");
}

// The wire has no form for a text that begins with a control character: that octet would be a
// length.
bool hasForm(std::string_view text) {
  return text.empty() || (static_cast<std::uint8_t>(text.front()) >= 0x20 && text.front() != 0x7F);
}

bool hasForm(const CMMHdr& header) {
  for (const CMMParam& parameter : *header.Params()) {
    if (!hasForm(parameter.Name()) || parameter.Name().empty() || !hasForm(parameter.Value())) {
      return false;
    }
    // A quality loses digits that stand in its text and not in its octets.
    if (equalsIgnoringCase(parameter.Name(), "q")) return false;
  }
  // Tolerance: this type is read without its zero, so one that begins like it is cut.
  const bool cut = header.Value().starts_with(kOctetStream) && header.Value() != kOctetStream;
  return hasForm(header.Name()) && hasForm(header.Value()) && !cut;
}

bool hasForm(const CMMPart& part) {
  for (const CMMHdr& header : *part.Headers()) {
    if (!hasForm(header)) return false;
  }
  for (unsigned i = 0; i < part.ChildCount(); ++i) {
    if (!hasForm(*part.Child(i))) return false;
  }
  return true;
}

bool hasForm(CMMsg& message) {
  for (const CMMAddrList* list : {message.GetTo(), message.GetCc(), message.GetBcc()}) {
    for (const CMMAddr& address : *list) {
      if (!hasForm(address.Value()->Text())) return false;
    }
  }
  // A multipart's name in other letters is a number to the encoder, and no multipart.
  const CMMHdr* type = message.Content()->Headers()->Find(kContentTypeName);
  if (type != nullptr && namesMultipart(type->Value()) && !isMultipart(type->Value())) return false;
  const char* id = message.GetTransactionId();
  return (id == nullptr || hasForm(id)) && hasForm(message.GetFrom()->Value()->Text()) &&
         (message.GetSubject() == nullptr || hasForm(message.GetSubject()->Text())) &&
         hasForm(*message.Content());
}

void checkPart(const InspectedPart& part, std::size_t size) {
  require(part.dataOffset <= size && part.dataLength <= size - part.dataOffset,
          "a part lies within the PDU");
  for (const InspectedPart& inner : part.parts) checkPart(inner, size);
}

}  // namespace

void pduDecode(Input input) {
  CMMsg message;
  message.SetTransactionId("left over");
  decode(input, message);
  CMMsg copy(message);
  message.Clear();
  require(message.GetTransactionId() == nullptr, "a cleared message is empty");
}

void pduRoundTrip(Input input) {
  CMMsg message;
  decode(input, message);
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  if (!hasForm(message)) return;
  const Encoded first = encode(message);
  if (first.result == 0) return;  // a part without content type
  CMMsg again;
  decode({reinterpret_cast<const std::uint8_t*>(first.octets.data()), first.octets.size()}, again);
  require(again.GetMsgType() == CMMsg::MSG_TYPE_SEND_REQ, "what is written is read as a message");
  const Encoded second = encode(again);
  require(second.result == 1, "what was read from written octets can be written");
  require(first.octets == second.octets, "what is written reads back equal");
}

void inspector(Input input) {
  const Inspection seen = inspect(input.data(), input.size());
  require(seen.headerLength + seen.bodyLength <= input.size(), "the inspection stays in the PDU");
  bool all = true;
  std::size_t last = 0;
  for (const Remark& remark : seen.remarks) {
    if (remark.kind == RemarkKind::tooMany) all = false;
    require(remark.offset >= last, "remarks stand in the order of their offsets");
    last = remark.offset;
    require(!remark.text.empty(), "a remark says something");
  }
  for (const InspectedPart& part : seen.parts) checkPart(part, input.size());
  CMMsg message;
  decode(input, message);
  if (!all || message.Content()->GetContent() != nullptr) return;
  require(seen.parts.size() == message.Content()->ChildCount(),
          "decoder and inspector see the same parts");
  for (std::size_t i = 0; i < seen.parts.size(); ++i) {
    const CMMPart* part = message.Content()->Child(static_cast<unsigned>(i));
    require(seen.parts[i].dataLength == static_cast<std::size_t>(part->GetContentLen()),
            "decoder and inspector see the same contents");
  }
}

void contentType(Input input) {
  ItemBudget budget;
  CMMHdr header;
  readContentType(input, header, budget);
  if (!hasForm(header)) return;
  Writer written;
  writeContentType(written, header);
  CMMHdr again;
  readContentType(written.written(), again, budget);
  Writer rewritten;
  writeContentType(rewritten, again);
  require(asText(written.written()) == asText(rewritten.written()),
          "a content type that is written reads back equal");

  HeaderWalker walker(input);
  HeaderItem item;
  while (walker.next(item)) {
    require(item.end() <= input.size(), "an item lies within its block");
    CMMHdr part;
    const auto name = partHeaderName(item);
    if (name.empty() || !readPartHeaderValue(item, name, part, budget)) continue;
    Writer out;
    writePartHeader(out, part);
    require(!out.failed(), "a part header that was read can be written");
  }
}

void extraction(Input input) {
  namespace fs = std::filesystem;
  static const test::TemporaryFolder parent;
  const fs::path folder = parent.path("inner/");
  fs::create_directories(folder);
  CMMsg message;
  decode(input, message);
  for (const bool utf8 : {false, true}) {
    for (const ExtractedPart& part : extractParts(message, folder.string(), {.textToUtf8 = utf8})) {
      if (part.path.empty()) {
        require(part.error != 0, "a part without a file says why");
        continue;
      }
      // By the library's own files: a name may be in the system's code page.
      const std::string_view path = part.path;
      require(path.starts_with(folder.string()) &&
                  path.find_first_of("/\\", folder.string().size()) == std::string_view::npos,
              "files are made in the folder and nowhere else");
      {
        const auto file = platform::InputFile::open(part.path.c_str());
        require(file.has_value(), "a part becomes a file");
        require(file->size() == part.octets, "a file has all of its part");
      }
      platform::removeFile(part.path.c_str());
    }
    require(fs::is_empty(folder), "extraction makes no file but those it names");
  }
  CSMIL presentation;
  MMS_MMSToSmil(&message, &presentation, folder.string().c_str(), 0);
  for (const auto& entry : fs::directory_iterator(folder)) fs::remove(entry);
  require(parent.entries() == 1, "nothing is made beside the folder");
}

}  // namespace mmsbrix::fuzz
