// An independent dissector reads the header blocks that we encode, each in a WSP request of its
// own.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
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

// Lines without the blanks ahead of them.
std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line.substr(std::min(line.find_first_not_of(' '), line.size())));
  }
  return lines;
}

// True for a line "name: value", or one that is the value, in any case; of a value that ends in
// "..." the beginning counts.
bool hasLine(const std::vector<std::string>& lines, std::string_view name,
             const std::string& value) {
  const bool isOpen = value.ends_with("...");
  const std::string wanted =
      lowerCase(std::string(name) + ": " + (isOpen ? value.substr(0, value.size() - 3) : value));
  return std::ranges::any_of(lines, [&](const std::string& line) {
    if (isOpen) return lowerCase(line).starts_with(wanted);
    return lowerCase(line) == wanted || lowerCase(line) == lowerCase(value);
  });
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
    const auto lines = linesOf(frames[i]);
    if (shown.empty()) continue;
    for (const std::string& value : linesOf(shown)) {
      EXPECT_TRUE(hasLine(lines, vector.name, value)) << value;
    }
  }
}

TEST_F(WspDissector, FollowsShiftsOfTheCodePage) {
  const auto octets =
      encodeHeaderBlock({{"Age", "1"}, {"0x05", "text", 16}, {"X-Foo", "a"}, {"Max-Forwards", "3"}})
          .octets;
  const std::string request = std::string("\1\x40\1/") + std::string(asText(Octets(octets)));
  const auto frames = wspOfFrames(
      run(folder_.put("pages.pcap", captureOf({udpDatagram(kWspPort, request)}, kUdp)), "-V"));
  ASSERT_EQ(frames.size(), 1U);
  SCOPED_TRACE(frames[0]);
  EXPECT_EQ(frames[0].find("Malformed"), std::string::npos);
  const auto lines = linesOf(frames[0]);
  EXPECT_TRUE(hasLine(lines, "Age", "1 second"));
  EXPECT_TRUE(hasLine(lines, "X-Foo", "a"));
  EXPECT_TRUE(hasLine(lines, "Max-Forwards", "3"));
  EXPECT_NE(lowerCase(frames[0]).find("code-page: 16"), std::string::npos);
}

}  // namespace
}  // namespace mmsbrix::test
