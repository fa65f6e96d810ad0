#include "sample_messages.h"

#include <cstdlib>
#include <string_view>

#include "mms/mmscodec.h"

namespace mmsbrix::bench {
namespace {

using namespace std::string_view_literals;

std::vector<std::uint8_t> octetsOf(std::string_view text) {
  return {text.begin(), text.end()};
}

void fillFields(CMMsg& message) {
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  message.SetTransactionId("T0123456789");
  message.SetVersion("1.2");
  const CMMAddr from("+358401234567", CMMAddr::TYPE_PLMN);
  message.SetFrom(&from);
  const CMMAddr to("+358409876543", CMMAddr::TYPE_PLMN);
  message.AddTo(&to);
}

// A part with the headers that phones write.
CMMPart& addPart(CMMsg& message, const char* type, const std::string& name,
                 const std::string& content) {
  CMMPart& part = *message.Content()->NewChild();
  CMMHdr contentType("Content-Type", type);
  const CMMParam nameParameter("name", name.c_str());
  contentType.Params()->Add(&nameParameter);
  if (std::string_view(type) == "text/plain") {
    const CMMParam charset("charset", "us-ascii");
    contentType.Params()->Add(&charset);
  }
  part.Headers()->Add(&contentType);
  const CMMHdr id("Content-ID", ("<" + name + ">").c_str());
  part.Headers()->Add(&id);
  const CMMHdr location("Content-Location", name.c_str());
  part.Headers()->Add(&location);
  part.SetContent(content.data(), static_cast<int>(content.size()));
  return part;
}

// Octets as compressed media have them, the same in every run.
std::string noise(std::size_t octets) {
  std::string text(octets, '\0');
  std::uint32_t state = 1;
  for (char& c : text) {
    state = state * 1664525 + 1013904223;
    c = static_cast<char>(state >> 24);
  }
  return text;
}

}  // namespace

std::vector<std::uint8_t> notification() {
  return octetsOf(
      "\x8C\x82\x98T0123456789\0\x8D\x92"
      "\x89\x0C\x80+358407654\0\x8A\x80\x8E\x03\x04\xB0\x00"
      "\x88\x05\x81\x03\x09\x3A\x80\x83http://mmsc.example/retrieve?id=012345\0"sv);
}

std::vector<std::uint8_t> sendConf() {
  return octetsOf(
      "\x8C\x81\x98T0123456789\0\x8D\x92\x92\x80\x93\x12\xEAThe message is on\0"
      "\x8B"
      "0123456789abcdef0123456789abcdef.0123456@mmsc.example\0"sv);
}

CMMsg smallRequest() {
  CMMsg message;
  fillFields(message);
  const CMMString subject("Greetings", "utf-8");
  message.SetSubject(&subject);
  message.SetMessageClass(CMMsg::MSG_CLASS_PERSONAL);
  message.SetPriority(CMMsg::MSG_PRIORITY_NORMAL);
  return message;
}

CMMsg requestWithPictures(int pictures, std::size_t octets) {
  CMMsg message;
  fillFields(message);
  CMMHdr related("Content-Type", "application/vnd.wap.multipart.related");
  const CMMParam type("type", "application/smil");
  const CMMParam start("start", "<smil>");
  related.Params()->Add(&type);
  related.Params()->Add(&start);
  message.Content()->Headers()->Add(&related);
  std::string slides = "<smil><head><layout/></head><body>";
  for (int i = 0; i < pictures; ++i) {
    slides += "<par dur=\"5s\"><img src=\"cid:picture" + std::to_string(i) + ".jpg\"/></par>";
  }
  slides += "<par><text src=\"cid:text.txt\"/></par></body></smil>";
  addPart(message, "application/smil", "smil", slides);
  addPart(message, "text/plain", "text.txt", "All the best from the sea.");
  const std::string picture = noise(octets / static_cast<std::size_t>(pictures));
  for (int i = 0; i < pictures; ++i) {
    addPart(message, "image/jpeg", "picture" + std::to_string(i) + ".jpg", picture);
  }
  return message;
}

CMMsg requestWithSmallParts(int parts) {
  CMMsg message;
  fillFields(message);
  const CMMHdr mixed("Content-Type", "application/vnd.wap.multipart.mixed");
  message.Content()->Headers()->Add(&mixed);
  const std::string text(40, 'x');
  for (int i = 0; i < parts; ++i) {
    addPart(message, "text/plain", std::to_string(i) + ".txt", text);
  }
  return message;
}

std::vector<std::uint8_t> encoded(CMMsg message) {
  void* data = nullptr;
  unsigned size = 0;
  if (MMS_SaveToMemory(&message, &data, &size, 0) != 1) std::abort();
  const auto* octets = static_cast<const std::uint8_t*>(data);
  std::vector<std::uint8_t> copy(octets, octets + size);
  MMS_Free(data);
  return copy;
}

std::string presentation(std::size_t octets) {
  std::string text =
      "<smil><head><layout><root-layout width=\"160\" height=\"160\"/>"
      "<region id=\"Image\" top=\"0\" left=\"0\" height=\"50%\" width=\"100%\" fit=\"meet\"/>"
      "<region id=\"Text\" top=\"50%\" left=\"0\" height=\"50%\" width=\"100%\"/>"
      "</layout></head><body>";
  constexpr std::string_view kEnd = "</body></smil>";
  for (int i = 0; text.size() + kEnd.size() < octets; ++i) {
    const std::string number = std::to_string(i);
    text += "<par dur=\"5000ms\"><img src=\"cid:picture" + number +
            ".jpg\" region=\"Image\"/><text src=\"cid:text" + number +
            ".txt\" region=\"Text\"/></par>";
  }
  return text.append(kEnd);
}

}  // namespace mmsbrix::bench
