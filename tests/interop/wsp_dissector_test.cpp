// What a packet dissector, tshark, makes of the header requests that this library encodes: each
// goes into a WSP PDU, in a UDP datagram, in a capture file.  Without tshark the test is skipped,
// but fails where the environment says CI=true.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ascii.h"
#include "support/hex.h"
#include "support/temporary_folder.h"
#include "wsp/header_vectors.h"
#include "wsp/octets.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix::test {
namespace {

constexpr std::uint16_t kWspPort = 9200;  // connectionless WSP
constexpr std::uint32_t kRawIp = 101;     // link type of packets that begin with their IP header

void big16(Writer& out, std::size_t value) {
  out.octet(static_cast<std::uint8_t>(value >> 8));
  out.octet(static_cast<std::uint8_t>(value));
}
void little32(Writer& out, std::size_t value) {
  for (int shift = 0; shift < 32; shift += 8) out.octet(static_cast<std::uint8_t>(value >> shift));
}

// A request with those headers.  Content-Type has a place of its own there, without its name.
std::vector<std::uint8_t> requestOf(const HeaderVector& vector) {
  const auto headers = encodeHeaderBlock({{vector.name, vector.value}}, vector.version).octets;
  const bool isContentType = std::string_view(vector.name) == "Content-Type";
  auto pdu = hex(isContentType ? "01 60 01" : "01 40 01 '/'");
  if (isContentType) {
    pdu.push_back(static_cast<std::uint8_t>(headers.size() - 1));
    pdu.push_back('/');
  }
  pdu.insert(pdu.end(), headers.begin() + (isContentType ? 1 : 0), headers.end());
  return pdu;
}

// A packet of UDP over IPv4 from the loopback address to itself.
void writePacket(Writer& out, Octets pdu) {
  const std::size_t udpSize = 8 + pdu.size();
  little32(out, 0);  // seconds
  little32(out, 0);  // microseconds
  little32(out, 20 + udpSize);
  little32(out, 20 + udpSize);
  out.append(Octets(hex("45 00")));
  big16(out, 20 + udpSize);
  out.append(Octets(hex("00 00 00 00 40 11 00 00 7F 00 00 01 7F 00 00 01")));
  big16(out, 40000);
  big16(out, kWspPort);
  big16(out, udpSize);
  big16(out, 0);  // no checksum
  out.append(pdu);
}

std::string writeCapture(const TemporaryFolder& folder, const std::vector<Octets>& requests) {
  Writer out;
  little32(out, 0xA1B2C3D4);
  out.append(Octets(hex("02 00 04 00 00 00 00 00 00 00 00 00 FF FF 00 00")));
  little32(out, kRawIp);
  for (const Octets request : requests) writePacket(out, request);
  const std::string path = folder.path("headers.pcap");
  std::ofstream(path, std::ios::binary)
      .write(asText(out.written()).data(), static_cast<std::streamsize>(out.size()));
  return path;
}

std::string outputOf(const std::string& command) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string output;
  char buffer[4096];
  for (std::size_t got = 0; pipe && (got = std::fread(buffer, 1, sizeof buffer, pipe.get())) > 0;) {
    output.append(buffer, got);
  }
  return output;
}

// One text for each packet: what stands under "Headers", lower case.
std::vector<std::string> dissect(const std::string& capture) {
  const std::string all =
      outputOf("TZ=UTC LC_ALL=C.UTF-8 tshark -n -r '" + capture + "' -V 2>/dev/null");
  std::vector<std::string> frames;
  for (std::size_t at = all.find("Frame "); at != std::string::npos;) {
    const std::size_t next = all.find("\nFrame ", at);
    std::string frame = all.substr(at, next - at);
    std::ranges::transform(frame, frame.begin(), foldAscii);
    frames.push_back(
        frame.substr(std::min(frame.find("\nwireless session protocol"), frame.size())));
    at = next == std::string::npos ? next : next + 1;
  }
  return frames;
}

TEST(WspDissector, ShowsEveryHeaderAsItWasMeant) {
  if (outputOf("tshark --version 2>/dev/null").empty()) {
    const char* ci = std::getenv("CI");
    if (ci != nullptr && std::string_view(ci) == "true") FAIL() << "tshark is missing";
    GTEST_SKIP() << "tshark is not installed";
  }
  std::vector<std::vector<std::uint8_t>> requests;
  for (const HeaderVector& vector : kHeaderVectors) {
    requests.push_back(requestOf(vector));
  }
  const TemporaryFolder folder;
  const auto frames =
      dissect(writeCapture(folder, std::vector<Octets>(requests.begin(), requests.end())));
  ASSERT_EQ(frames.size(), requests.size());
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const HeaderVector& vector = kHeaderVectors[i];
    SCOPED_TRACE(std::string(vector.name) + ": " + vector.value + "\n" + frames[i]);
    EXPECT_EQ(frames[i].find("malformed"), std::string::npos);
    if (vector.shown == kUndissected) continue;
    EXPECT_EQ(frames[i].find("invalid"), std::string::npos);
    std::string shown = vector.shown != nullptr ? vector.shown : vector.value;
    std::ranges::transform(shown, shown.begin(), foldAscii);
    EXPECT_NE(frames[i].find(shown), std::string::npos) << "not shown: " << shown;
  }
}

}  // namespace
}  // namespace mmsbrix::test
