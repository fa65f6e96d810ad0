// The targets over the library's inner side, and the seeds that its own encoders write for them.
#include <algorithm>
#include <array>

#include "support/messages.h"
#include "targets.h"
#include "wsp/header_block.h"
#include "wsp/multipart_entries.h"

namespace mmsbrix::fuzz {
namespace {

using Octets = std::vector<std::uint8_t>;
using namespace std::string_literals;

constexpr auto kTargets = std::to_array<Target>({
    {"pdu_decode", pduDecode},
    {"pdu_round_trip", pduRoundTrip},
    {"inspector", inspector},
    {"wsp_primitives", wspPrimitives},
    {"content_type", contentType},
    {"wsp_headers", wspHeaders},
    {"wsp_capabilities", wspCapabilities},
    {"wsp_multipart", wspMultipart},
    {"smil", smil},
    {"extraction", extraction},
    {"http_reply", httpReply},
    {"wtp_datagrams", wtpDatagrams},
    {"wsp_session", wspSession},
    {"wsp_server", wspServer},
});

Octets completeMessage() {
  CMMsg message;
  test::fillComplete(message);
  return test::encode(message);
}

Octets smallMessage() {
  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  message.SetTransactionId("T");
  CMMHdr type("Content-Type", "text/plain");
  message.Content()->Headers()->Add(&type);
  message.Content()->SetContent("Hei", 3);
  return test::encode(message);
}

Octets headerBlock(EncodingVersion version) {
  const std::vector<HeaderField> fields = {
      {"Accept", "text/plain; q=0.5, image/jpeg"},
      {"Cache-Control", "max-age=60, private=\"Accept\""},
      {"Date", "Sat, 21 Nov 2026 10:30:05 GMT"},
      {"Authorization", "Basic dXNlcjpwYXNz"},
      {"Content-Range", "bytes 0-4/10"},
      {"Warning", "199 host \"text\""},
      {"X-Own", "1"},
  };
  Octets block = encodeHeaderBlock(fields, version).octets;
  block.insert(block.begin(), static_cast<std::uint8_t>(version));
  return block;
}

}  // namespace

std::span<const Target> targets() {
  return kTargets;
}

std::vector<Octets> encodedSeeds(std::string_view target) {
  const auto among = [target](std::initializer_list<std::string_view> names) {
    return std::ranges::find(names, target) != names.end();
  };
  if (among({"pdu_decode", "pdu_round_trip", "inspector", "extraction"})) {
    return {completeMessage(), smallMessage()};
  }
  if (among({"wsp_headers"})) {
    return {headerBlock(EncodingVersion::v1_2), headerBlock(EncodingVersion::v1_5)};
  }
  if (among({"wsp_multipart"})) {
    QuorvexMms::MultipartEntryList list;
    list.add({"text/plain; charset=utf-8; name=a.txt", asOctets("Hei")});
    list.add({"application/vnd.wap.multipart.mixed", Octets{1, 1, 1, 0x83, 'x'}});
    Writer out;
    list.encodeToFrame(out);
    return {Octets(out.written().begin(), out.written().end())};
  }
  if (among({"http_reply"})) {
    const std::string reply =
        "\0\0\0HTTP/1.1 200 OK\nContent-Type: application/vnd.wap.mms-message\n\n"
        "\x8C\x81\x98T1\0\x8D\x90\x92\x80\x8Bm@r\0\x93text\0"s;
    return {Octets(reply.begin(), reply.end())};
  }
  return {};
}

}  // namespace mmsbrix::fuzz
