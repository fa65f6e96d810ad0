// Generated and hostile header blocks: round trips both ways, mutations, and sizes.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "platform/ascii.h"
#include "support/hex.h"
#include "wsp/header_block.h"
#include "wsp/header_vectors.h"
#include "wsp/header_walker.h"
#include "wsp/multipart_entries.h"

namespace mmsbrix::test {
namespace {

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  std::size_t below(std::size_t limit) { return static_cast<std::size_t>(random_() % limit); }
  template <class Items>
  const auto& oneOf(const Items& items) {
    return items[below(items.size())];
  }
  EncodingVersion version() { return static_cast<EncodingVersion>(below(5)); }

  std::string token() {
    constexpr std::string_view kCharacters = "abcXYZ019-_.!*'";
    std::string text(1, static_cast<char>('a' + below(26)));
    for (std::size_t left = below(9); left > 0; --left) text += oneOf(kCharacters);
    return text;
  }
  std::string number() { return std::to_string(random_() >> below(64)); }
  std::string quoted() {
    constexpr std::string_view kCharacters = "ab ,;=()<>@\xC3\xA9";
    std::string text = "\"";
    for (std::size_t left = below(9); left > 0; --left) {
      if (below(6) == 0) text += below(2) == 0 ? "\\\"" : "\\\\";
      text += oneOf(kCharacters);
    }
    return text + '"';
  }
  std::string parameter() {
    std::string name = "x-" + token();
    switch (below(4)) {
      case 0:
        return name;
      case 1:
        return name + '=' + number();
      case 2:
        return name + '=' + token();
      default:
        return name + '=' + quoted();
    }
  }
  std::string parameters(std::string_view separator) {
    std::string text;
    for (std::size_t left = below(3); left > 0; --left) text.append(separator).append(parameter());
    return text;
  }
  std::string list(std::string (Generator::*element)()) {
    std::string text = (this->*element)();
    for (std::size_t left = below(4); left > 0; --left)
      text.append(", ").append((this->*element)());
    return text;
  }
  std::string media() { return token() + '/' + token() + parameters("; "); }
  std::string weighted() {
    return token() + (below(2) == 0 ? "" : "; q=0." + std::to_string(1 + below(9)));
  }
  std::string directive() { return below(2) == 0 ? token() : "x-" + token() + '=' + quoted(); }
  std::string challenge() { return "X" + token() + " realm=" + quoted() + parameters(", "); }

  /// A header with a generated value in the spelling that decoding gives.
  HeaderField field() {
    switch (below(14)) {
      case 0:
        return {"Accept", list(&Generator::media)};
      case 1:
        return {"Content-Type", media()};
      case 2:
        return {"Accept-Charset", list(&Generator::weighted)};
      case 3:
        return {"TE", list(&Generator::weighted)};
      case 4:
        return {"Cache-Control", list(&Generator::directive)};
      case 5:
        return {"Age", number()};
      case 6:
        return {"Etag", quoted()};
      case 7:
        return {"Range",
                "bytes=" + std::to_string(below(1 << 20)) + "-" + std::to_string(below(9))};
      case 8:
        return {"Content-Disposition", token() + parameters("; ")};
      case 9:
        return {"Set-Cookie", token() + '=' + token() + "; Version=1" + parameters("; ")};
      case 10:
        return {"Cookie",
                "$Version=\"1\"; " + token() + "=" + quoted() + "; $Path=\"/" + token() + '"'};
      case 11:
        return {"X-" + token(), quoted()};
      case 12:
        return {"Age", below(2) == 0 ? token() : "0" + number()};  // no number that fits
      default: {
        const HeaderVector& vector = oneOf(kHeaderVectors);
        return {vector.name, vector.value};
      }
    }
  }

 private:
  std::mt19937_64 random_;
};

TEST(HeaderRoundTrip, TextToOctetsToTextAndBack) {
  Generator generate(4);
  for (int round = 0; round < 20000; ++round) {
    std::vector<HeaderField> fields;
    std::set<std::string> names;  // repeated names would be joined
    for (std::size_t left = 1 + generate.below(5); left > 0; --left) {
      HeaderField field = generate.field();
      if (names.insert(field.name).second) fields.push_back(std::move(field));
    }
    const EncodingVersion version = generate.version();
    const auto encoded = encodeHeaderBlock(fields, version);
    ASSERT_TRUE(encoded.problems.empty());
    const auto decoded = decodeHeaderBlock(encoded.octets.data(), encoded.octets.size());
    ASSERT_TRUE(decoded.problems.empty()) << toHex(encoded.octets);
    ASSERT_EQ(decoded.fields.size(), fields.size()) << toHex(encoded.octets);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      ASSERT_EQ(decoded.fields[i].name, fields[i].name);
      ASSERT_EQ(decoded.fields[i].value, fields[i].value) << toHex(encoded.octets);
    }
    ASSERT_EQ(encodeHeaderBlock(decoded.fields, version).octets, encoded.octets);
  }
}

struct Extent {
  std::size_t items = 0;  ///< headers, and what is none but is not passed over in silence
  bool ends = false;      ///< exactly behind a whole header of the default page
};

Extent extentOf(Octets octets) {
  Extent extent;
  HeaderWalker walker(octets);
  for (HeaderItem item; walker.next(item);) {
    const bool isShift = item.kind == HeaderItem::Kind::shift;
    if (!isShift || item.cutShort() || item.page == 0) ++extent.items;
    extent.ends = item.page == kFirstPage && !item.cutShort() && !walker.broken();
  }
  return extent;
}

TEST(HeaderHostile, MutatedBlocksKeepTheirNeighbours) {
  Generator generate(7);
  const auto before = hex("85 81");
  const auto behind = hex("9E 82");
  std::size_t framed = 0;
  std::size_t dropped = 0;
  for (int round = 0; round < 100000; ++round) {
    auto middle = hex(generate.oneOf(kHeaderVectors).octets);
    for (std::size_t left = 1 + generate.below(3); left > 0 && !middle.empty(); --left) {
      const std::size_t at = generate.below(middle.size());
      const auto place = middle.begin() + static_cast<std::ptrdiff_t>(at);
      const std::size_t how = generate.below(6);
      if (how == 0) middle.erase(place);
      if (how == 1) middle.insert(place, static_cast<std::uint8_t>(generate.below(256)));
      if (how == 2) *place ^= static_cast<std::uint8_t>(1U << generate.below(8));
      if (how > 2) *place = static_cast<std::uint8_t>(generate.below(256));
    }
    const Extent extent = extentOf(middle);
    std::vector<std::uint8_t> block = before;
    block.insert(block.end(), middle.begin(), middle.end());
    block.insert(block.end(), behind.begin(), behind.end());
    // Exactly sized, so that a step outside is seen.
    const std::vector<std::uint8_t> octets(block.begin(), block.end());
    const auto decoded = decodeHeaderBlock(octets.data(), octets.size(), HeaderLists::split);
    ASSERT_EQ(decoded.fields.size() + decoded.problems.size(), extentOf(octets).items)
        << toHex(octets);
    ASSERT_FALSE(decoded.fields.empty()) << toHex(octets);
    ASSERT_EQ(decoded.fields.front(), (HeaderField{"Age", "1"}));
    if (extent.ends) {
      ASSERT_EQ(decoded.fields.back(), (HeaderField{"Max-Forwards", "2"})) << toHex(octets);
      ++framed;
    }
    dropped += decoded.problems.size();
    // What has been read can be written again, whatever it is.
    const auto again = encodeHeaderBlock(decoded.fields, generate.version());
    ASSERT_TRUE(again.problems.empty()) << toHex(octets) << ": " << again.problems.front().name;
  }
  EXPECT_GT(framed, 40000U);
  EXPECT_GT(dropped, 10000U);
}

TEST(HeaderHostile, EveryTruncationOfEveryVector) {
  for (const HeaderVector& vector : kHeaderVectors) {
    const auto whole = hex(vector.octets);
    for (std::size_t size = 1; size < whole.size(); ++size) {
      const std::vector<std::uint8_t> cut(whole.begin(),
                                          whole.begin() + static_cast<std::ptrdiff_t>(size));
      const auto decoded = decodeHeaderBlock(cut.data(), cut.size());
      const Extent extent = extentOf(cut);
      EXPECT_EQ(decoded.problems.empty(), extent.ends) << toHex(cut);
    }
  }
}

TEST(HeaderHostile, TimeAndMemoryAreLinear) {
  constexpr std::size_t kOctets = 1 << 18;
  const auto fill = [](std::string_view start, std::string_view pattern, std::string_view end) {
    auto octets = hex(start);
    const auto repeated = hex(pattern);
    while (octets.size() < kOctets) octets.insert(octets.end(), repeated.begin(), repeated.end());
    const auto tail = hex(end);
    octets.insert(octets.end(), tail.begin(), tail.end());
    return octets;
  };
  for (const char* pattern :
       {"00", "01", "7F", "7F 40", "80 80", "80 'a'", "'a'", "'a' 00 00", "85 85", "10 85 85",
        "95 1F 8F FF FF FF 7F", "88 02 8B 81", "AD 03 80 00", "C2 04 9F 02 00 00", "CB 01 00"}) {
    const auto octets = fill("", pattern, "");
    const auto decoded = decodeHeaderBlock(octets.data(), octets.size());
    std::size_t size = 0;
    for (const auto& field : decoded.fields) size += field.name.size() + field.value.size();
    EXPECT_LT(size, 32 * octets.size()) << pattern;
    (void)encodeHeaderBlock(decoded.fields);
    QuorvexMms::MultipartEntryList list;
    Reader in{Octets(octets)};
    list.decodeFromFrame(in, WapAssignments::kVersion15);
  }
  // One value that is as large as the block: parameters, field names, cookies, dates.
  for (const char* pattern : {"'a' 00 00", "85 'a' 00", "85 22 00", "81 85", "85", "'a'"}) {
    for (const char* name : {"91 1F 90 80 01 83", "C7 1F 90 80 01 80", "87 1F 90 80 01 'x' 00",
                             "C2 1F 90 80 01 9F", "C4 1F 90 80 01 92 00"}) {
      const auto octets = fill(name, pattern, "00 00 00 00 00 00 00");
      const auto decoded = decodeHeaderBlock(octets.data(), octets.size());
      (void)encodeHeaderBlock(decoded.fields);
    }
  }
  for (const char* pattern : {"',a'", "'a;'", "'(a,'", "22 '\\'", "'\\' 22", "'a=b;'", "'a=b,'"}) {
    const auto octets = fill("'x '", pattern, "");
    const std::string value(asText(Octets(octets)));
    for (const char* name : {"Accept", "Via", "WWW-Authenticate", "Cookie", "Set-Cookie", "Warning",
                             "Content-Type", "Authorization", "Cache-Control"}) {
      (void)encodeHeaderBlock({{name, value}}, EncodingVersion::v1_5);
    }
  }
}

}  // namespace
}  // namespace mmsbrix::test
