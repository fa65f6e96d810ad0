// An independent dissector reads the header blocks that we encode, each in a WSP request of its
// own.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ascii.h"
#include "support/dissector.h"
#include "support/hex.h"
#include "support/pcap.h"
#include "wsp/header_vectors.h"
#include "wsp/octets.h"

namespace mmsbrix::test {
namespace {

constexpr unsigned kWspPort = 9200;  // connectionless WSP
constexpr unsigned kUdp = 17;

std::string lowerCase(std::string text) {
  std::ranges::transform(text, text.begin(), foldAscii);
  return text;
}

// A request with that header.  Content-Type has a place of its own there, without its name.
std::string requestOf(const HeaderVector& vector) {
  const auto headers = encodeHeaderBlock({{vector.name, vector.value}}, vector.version).octets;
  const std::string octets(asText(Octets(headers)));
  const std::string transaction(1, '\1');
  if (std::string_view(vector.name) != "Content-Type") return transaction + "\x40\1/" + octets;
  return transaction + "\x60\1" + static_cast<char>(octets.size() - 1) + '/' + octets.substr(1);
}

// What a tree says of WSP in each of its frames.
std::vector<std::string> wspOfFrames(const std::string& tree) {
  std::vector<std::string> frames;
  for (std::size_t at = tree.find("Frame "); at != std::string::npos;) {
    const std::size_t next = tree.find("\nFrame ", at);
    const std::string frame = tree.substr(at, next - at);
    frames.push_back(
        frame.substr(std::min(frame.find("\nWireless Session Protocol"), frame.size())));
    at = next == std::string::npos ? next : next + 1;
  }
  return frames;
}

class WspDissector : public DissectorTest {};

TEST_F(WspDissector, ShowsEveryHeaderAsItWasMeant) {
  std::vector<std::string> datagrams;
  for (const HeaderVector& vector : kHeaderVectors) {
    datagrams.push_back(udpDatagram(kWspPort, requestOf(vector)));
  }
  const auto frames =
      wspOfFrames(run(folder_.put("headers.pcap", captureOf(datagrams, kUdp)), "-V"));
  ASSERT_EQ(frames.size(), kHeaderVectors.size());
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const HeaderVector& vector = kHeaderVectors[i];
    SCOPED_TRACE(std::string(vector.name) + ": " + vector.value + "\n" + frames[i]);
    EXPECT_FALSE(frames[i].empty());
    EXPECT_EQ(frames[i].find("Malformed"), std::string::npos);
    if (vector.shown == kUndissected) continue;
    EXPECT_EQ(frames[i].find("nvalid"), std::string::npos);
    const std::string shown = vector.shown != nullptr ? vector.shown : vector.value;
    EXPECT_NE(lowerCase(frames[i]).find(lowerCase(shown)), std::string::npos) << shown;
  }
}

}  // namespace
}  // namespace mmsbrix::test
