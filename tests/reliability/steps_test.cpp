// Twice the octets take twice the steps: for inputs of many shapes the basic blocks are counted
// that the library runs through, since clocks tell of the machine.  The library's sources are
// compiled for this with a call at each of them.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "convert/extraction.h"
#include "mms/inspector.h"
#include "smil/smilcodec.h"
#include "support/hex.h"
#include "support/messages.h"
#include "wsp/header_block.h"
#include "wsp/multipart_entries.h"

namespace {

using namespace mmsbrix;
using test::hex;
using Octets = std::vector<std::uint8_t>;
using Work = std::function<void()>;

std::uint64_t steps = 0;

}  // namespace

extern "C" void __sanitizer_cov_trace_pc() {
  ++steps;
}

namespace {

constexpr std::size_t kOctets = 16000;

/// What a run takes: the case, and its steps.
using Counts = std::map<std::string, std::uint64_t>;
Counts* counts = nullptr;

void measure(const std::string& name, const Work& work) {
  const std::uint64_t before = steps;
  work();
  (*counts)[name] = steps - before;
}

Octets repeated(const char* start, const char* pattern, std::size_t octets) {
  Octets all = hex(start);
  const Octets more = hex(pattern);
  while (all.size() + more.size() <= octets) all.insert(all.end(), more.begin(), more.end());
  return all;
}

std::string repeatedText(const std::string& start, const std::string& pattern,
                         const std::string& end, std::size_t octets) {
  std::string all = start;
  while (all.size() + pattern.size() + end.size() <= octets) all += pattern;
  return all + end;
}

// One element with 100 attributes, then 200: an element has no more than 256.
std::string manyAttributes(std::size_t octets) {
  std::string all = "<smil";
  for (std::size_t i = 0; i < octets / 160; ++i) all += " a" + std::to_string(1000 + i) + "='1'";
  return all + "/>";
}

void pdus(std::size_t octets) {
  for (const char* start : {"8C 80 ", "8C 84 84 A3 01 ", "8C 84 84 1F 8F FF 7F 83 ",
                            "8C 84 84 A3 01 8F FF 7F 00 83 "}) {
    for (const char* pattern :
         std::to_array<const char*>({"00", "01", "7F", "1F 81 80", "'a'", "'a' 00", "97 00",
                                     "84 1E", "98 1F 8F FF FF FF 7F", "8E 'a'", "00 00",
                                     "02 02 A3 01 00 00", "81 01 00", "8E 00", "'a' 00 00"})) {
      const Octets pdu = repeated(start, pattern, octets);
      const std::string name = std::string(start) + "+ " + pattern;
      measure("decode " + name, [&] {
        CMMsg message;
        MMS_LoadFromMemory(pdu.data(), static_cast<unsigned>(pdu.size()), &message, 0);
      });
      measure("inspect " + name, [&] { (void)inspect(pdu.data(), pdu.size()); });
    }
  }
}

void headerBlocks(std::size_t octets) {
  for (const char* pattern : {"80 83", "80 83 81 EA", "'a' 00 'b' 00", "88 81", "7F 02 8A 83",
                              "87 04 80 'a' 00 'b'", "80 1F 8F FF 7F", "00"}) {
    const Octets block = repeated("", pattern, octets);
    measure(std::string("headers ") + pattern,
            [&] { (void)decodeHeaderBlock(block.data(), block.size()); });
    const DecodedHeaders decoded = decodeHeaderBlock(block.data(), block.size());
    measure(std::string("write headers ") + pattern,
            [&] { (void)encodeHeaderBlock(decoded.fields); });
  }
  for (const char* pattern : {"01 01 83 'a'", "01 00 83", "07 00 83 8E 'abcd' 00"}) {
    const Octets body = repeated("00", pattern, octets);
    measure(std::string("multipart ") + pattern, [&] {
      QuorvexMms::MultipartEntryList list;
      Reader in{mmsbrix::Octets(body)};
      list.decodeFromFrame(in);
      Writer out;
      list.encodeToFrame(out);
    });
  }
}

void presentations(std::size_t octets) {
  const std::vector<std::pair<const char*, std::string>> texts = {
      {"slides",
       repeatedText("<smil><body>", "<par><img src='a'/></par>", "</body></smil>", octets)},
      {"attributes",
       repeatedText("<smil><body>", "<a b='1' c='2' d='3'/>", "</body></smil>", octets)},
      {"many attributes", manyAttributes(octets)},
      {"one long attribute", repeatedText("<smil a='", "&quot;", "'/>", octets)},
      {"text", repeatedText("<smil>", "word &lt; ", "</smil>", octets)},
      {"comments", repeatedText("<smil>", "<!-- c -->", "</smil>", octets)},
      {"entities",
       repeatedText("<!DOCTYPE smil [<!ENTITY a 'text'>]><smil>", "&a;", "</smil>", octets)},
      {"never closed", repeatedText("<smil>", "<a b='", "", octets)},
      {"marks", repeatedText("<smil>", "<", "", octets)},
  };
  for (const auto& [name, text] : texts) {
    CSMIL smil;
    measure(std::string("read smil, ") + name,
            [&] { MMS_LoadSmilFromMemory(text.c_str(), &smil, 0); });
    measure(std::string("write smil, ") + name, [&] {
      unsigned char* written = nullptr;
      unsigned length = 0;
      MMS_SaveSmilToMemory(&smil, &written, &length, 0);
      MMS_Free(written);
    });
  }
}

void messages(std::size_t octets) {
  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  CMMHdr type("Content-Type", "application/vnd.wap.multipart.mixed");
  message.Content()->Headers()->Add(&type);
  const CMMAddr address("+358401234567", CMMAddr::TYPE_PLMN);
  for (std::size_t i = 0; i < octets / 100; ++i) {
    message.AddTo(&address);
    test::addPart(message, "text/plain", "name", "a.txt", "some text that is no long one");
  }
  measure("encode parts and recipients", [&] {
    void* data = nullptr;
    unsigned size = 0;
    MMS_SaveToMemory(&message, &data, &size, 0);
    MMS_Free(data);
  });
  for (const char* encoding : {"base64", "quoted-printable"}) {
    CMMPart part;
    CMMHdr header("Content-Transfer-Encoding", encoding);
    part.Headers()->Add(&header);
    const std::string content = repeatedText("", "=41Q", "", octets);
    part.SetContent(content.data(), static_cast<int>(content.size()));
    measure(std::string("undo ") + encoding, [&] { (void)textContent(part); });
  }
}

Counts run(std::size_t octets) {
  Counts all;
  counts = &all;
  pdus(octets);
  headerBlocks(octets);
  presentations(octets);
  messages(octets);
  return all;
}

TEST(Steps, AreLinearInTheOctets) {
  run(kOctets / 4);  // what is made on the first use
  const Counts small = run(kOctets);
  const Counts large = run(2 * kOctets);
  EXPECT_GT(small.size(), 100U);
  double worst = 0;
  std::string which;
  for (const auto& [name, count] : small) {
    ASSERT_GT(count, 0U) << name << ": nothing is counted";
    const double ratio = static_cast<double>(large.at(name)) / static_cast<double>(count);
    EXPECT_LE(ratio, 2.2) << name << ": " << count << " steps, then " << large.at(name);
    if (ratio > worst) {
      worst = ratio;
      which = name;
    }
    // And not too many of them: a factor is as bad as a square.
    EXPECT_LE(count, kOctets * 400) << name;
  }
  std::printf("%zu shapes; twice the octets take %.2f times the steps at most (%s)\n", small.size(),
              worst, which.c_str());
}

}  // namespace
