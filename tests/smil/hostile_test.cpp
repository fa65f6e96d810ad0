// Documents made to exhaust a reader: a clean 0, in bounded time and memory.
#include <gtest/gtest.h>

#include <ctime>
#include <fstream>
#include <functional>
#include <string>

#include "smil/smilcodec.h"
#include "support/parse_errors.h"
#include "support/smil.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kSlowdown = 8;
#else
constexpr std::size_t kSlowdown = 1;
#endif

// The most memory that the process had since the last reset, in octets.
std::size_t peakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") {
      std::size_t kilobytes = 0;
      status >> kilobytes;
      return kilobytes << 10;
    }
  }
  return 0;
}
void resetPeakMemory() {
  std::ofstream("/proc/self/clear_refs") << 5;
}

// Runs `load`, which gives `expected`, in at most a second and 64 MiB of its own.
void expectHarmless(const char* name, int expected, const std::function<int()>& load) {
  resetPeakMemory();
  const std::size_t memoryBefore = peakMemory();
  const std::clock_t begin = std::clock();  // of this process, whatever else the machine does
  EXPECT_EQ(load(), expected) << name;
  const double seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
  EXPECT_LT(seconds, 1.0 * kSlowdown) << name;
  EXPECT_LT(peakMemory(), memoryBefore + (std::size_t{64} << 20) * kSlowdown) << name;
}

std::string repeated(const std::string& text, std::size_t times) {
  std::string all;
  all.reserve(text.size() * times);
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

std::string bomb(const char* use) {
  std::string text = "<!DOCTYPE smil [<!ENTITY a0 'aaaaaaaaaa'>";
  for (int i = 1; i < 20; ++i) {
    const std::string below = "&a" + std::to_string(i - 1) + ";";
    text += "<!ENTITY a" + std::to_string(i) + " '" + repeated(below, 10) + "'>";
  }
  return text + "]>" + use;
}

std::string numbered(const char* before, const char* behind, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += before + std::to_string(i) + behind;
  return text;
}

TEST(HostileSmil, IsRefusedWithinBounds) {
  const std::string large = "<!ENTITY l '" + std::string(500000, 'x') + "'>";
  const std::pair<const char*, std::string> kTexts[] = {
      {"entity bomb in text", bomb("<smil>&a19;</smil>")},
      {"entity bomb in an attribute", bomb("<smil a='&a19;'/>")},
      {"entity bomb in a default", bomb("<smil/>").insert(15, "<!ATTLIST smil x CDATA '&a19;'>")},
      {"entity of itself", "<!DOCTYPE smil [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><smil a='&a;'/>"},
      {"large entity, many references",
       "<!DOCTYPE smil [" + large + "]><smil>" + repeated("<a b='&l;'/>", 50000) + "</smil>"},
      {"the same in text",
       "<!DOCTYPE smil [" + large + "]><smil>" + repeated("&l;", 50000) + "</smil>"},
      {"parameter entities",
       "<!DOCTYPE smil [<!ENTITY % p '<!ENTITY x \"y\">'>" + repeated("%p;", 500000) + "]><smil/>"},
      {"100 000 levels", "<smil>" + repeated("<a>", 100000) + repeated("</a>", 100000) + "</smil>"},
      {"100 000 open levels", repeated("<smil>", 100000)},
      {"levels in an entity", "<!DOCTYPE smil [<!ENTITY d '" + repeated("<a>", 100000) +
                                  repeated("</a>", 100000) + "'>]><smil>&d;</smil>"},
      {"many elements", "<smil>" + repeated("<a/>", 1500000) + "</smil>"},
      {"many comments and texts", "<smil>" + repeated("x<!---->", 900000) + "</smil>"},
      {"many attributes", "<smil " + numbered(" a", "=''", 600000) + "/>"},
      {"many attributes, often",
       "<smil>" + repeated("<a " + numbered(" a", "=''", 250) + "/>", 2000) + "</smil>"},
      {"many attributes in an entity", "<!DOCTYPE smil [<!ENTITY e '&#60;a " +
                                           numbered(" a", "&#61;\"\"", 300000) +
                                           "/>'>]><smil>&e;</smil>"},
      {"many attribute declarations",
       "<!DOCTYPE smil [<!ATTLIST smil " + numbered(" a", " CDATA 'x'", 300000) + ">]><smil/>"},
      {"many notations", "<!DOCTYPE smil [<!ATTLIST smil a NOTATION (n" +
                             numbered("|n", "", 600000) + ") #IMPLIED>]><smil/>"},
      {"many unparsed entities", "<!DOCTYPE smil [<!NOTATION n SYSTEM 'x'>" +
                                     numbered("<!ENTITY e", " SYSTEM 'f' NDATA n>", 100000) +
                                     "]><smil/>"},
      {"many entities", "<!DOCTYPE smil [" + numbered("<!ENTITY e", " 'x'>", 300000) + "]><smil/>"},
      {"deep content model",
       "<!DOCTYPE smil [<!ELEMENT smil " + std::string(1000000, '(') + "]><smil/>"},
      {"deep conditional section", "<!DOCTYPE smil [" + repeated("<![", 1000000) + "]><smil/>"},
      {"50 MB of text", "<smil>" + std::string(50000000, 'x') + "</smil>"},
      {"50 MB attribute", "<smil a='" + std::string(50000000, 'x') + "'/>"},
      {"50 MB without a tag", std::string(50000000, ' ')},
      {"8 MB name", "<smil><" + std::string(8000000, 'x') + "/></smil>"},
  };
  ParseErrors errors;
  const TemporaryFolder folder;
  for (const auto& [name, text] : kTexts) {
    CSMIL smil;
    expectHarmless(name, 0,
                   [&, &text = text] { return MMS_LoadSmilFromMemory(text.c_str(), &smil, 0); });
    EXPECT_NE(errors.take(), "") << name;
    const std::string path = folder.put("f", text);
    expectHarmless(name, 0, [&] { return MMS_LoadSmil(path.c_str(), &smil, 0); });
    EXPECT_NE(errors.take(), "") << name;
    EXPECT_EQ(dump(smil), "smil") << name;
  }
}

TEST(HostileSmil, WhatIsNoAttributeDoesNotCountAsOne) {
  const std::string marks(3000, '=');
  for (const std::string& text :
       {"<smil><!--" + marks + "--></smil>", "<smil a=\"" + marks + "|>'\"/>",
        "<smil>" + marks + "<![CDATA[<a " + marks + "]]></smil>"}) {
    CSMIL smil;
    EXPECT_EQ(MMS_LoadSmilFromMemory(text.c_str(), &smil, 0), 1) << text.substr(0, 20);
  }
}

// The limits are this library's own, not whatever a parser brings along.
TEST(HostileSmil, ReasonsOfTheLimits) {
  const std::pair<std::string, const char*> kTexts[] = {
      {repeated("<smil>", 201) + repeated("</smil>", 201), "The elements are nested too deeply"},
      {"<!DOCTYPE smil [<!ENTITY e '" + std::string(900, 'x') + "'>]><smil a='" +
           repeated("&e;", 1200) + "'/>",
       "The entities stand for too much text"},
      {"<!DOCTYPE smil [" + numbered("<!ENTITY e", " 'x'>", 1001) + "]><smil/>",
       "The document type has too many declarations"},
      {"<smil " + numbered(" a", "=''", 257) + "/>", "An element has too many attributes"},
      {"<!DOCTYPE smil [<!ATTLIST a b CDATA '" + std::string(7900, 'x') + "'>]><smil>" +
           repeated("<a/>", 200) + "</smil>",
       "The default attributes are too much text"},
      {"<smil>" + repeated("<a b=''/>", 50000) + "</smil>", "The document has too many elements"},
      {"<smil>" + std::string(8 << 20, ' ') + "</smil>", "The document is too large"},
  };
  ParseErrors errors;
  for (const auto& [text, reason] : kTexts) {
    CSMIL smil;
    EXPECT_EQ(MMS_LoadSmilFromMemory(text.c_str(), &smil, 0), 0) << reason;
    const std::string report = errors.take();
    EXPECT_NE(report.find(reason), std::string::npos) << reason << "\n" << report;
  }
}

TEST(HostileSmil, WhatIsLargeButWithinBoundsIsRead) {
  const std::pair<const char*, std::string> kTexts[] = {
      {"deep", repeated("<smil>", 200) + repeated("</smil>", 200)},
      {"wide", "<smil>" + repeated("<par><img src='cid:1'/></par>", 33000) + "</smil>"},
      {"long text", "<smil>" + std::string(7500000, 'x') + "</smil>"},
      {"long attribute", "<smil a='" + std::string(7500000, 'x') + "'/>"},
      {"many references",
       "<!DOCTYPE smil [<!ENTITY e 'x'>]><smil a='" + repeated("&e;", 500000) + "'/>"},
  };
  for (const auto& [name, text] : kTexts) {
    CSMIL smil;
    expectHarmless(name, 1,
                   [&, &text = text] { return MMS_LoadSmilFromMemory(text.c_str(), &smil, 0); });
  }
}

// What a fuzzer does, in short: pieces that mean something to a parser, in any order.
TEST(HostileSmil, ScrambledMarkupNeverHurts) {
  constexpr const char* kPieces[] = {"<smil>",
                                     "</smil>",
                                     "<!DOCTYPE smil [",
                                     "]>",
                                     "<!ENTITY a '",
                                     "'>",
                                     "&a;",
                                     "<par ",
                                     "a='",
                                     "/>",
                                     "<!--",
                                     "-->",
                                     "<![CDATA[",
                                     "]]>",
                                     "<?x ",
                                     "?>",
                                     "<!ENTITY % p '",
                                     "%p;",
                                     "&#60;",
                                     "<!ATTLIST smil a CDATA '",
                                     "\xFF",
                                     "\xC3\xA4",
                                     "&#0;",
                                     " "};
  unsigned state = 1;
  const ParseErrors errors;
  for (int round = 0; round < 20000; ++round) {
    std::string text = round % 2 == 0 ? "<!DOCTYPE smil [<!ENTITY a 'x'>" : "<smil>";
    for (int i = 0; i < 12; ++i) {
      state = state * 1664525 + 1013904223;
      text += kPieces[(state >> 16) % std::size(kPieces)];
    }
    CSMIL smil;
    MMS_LoadSmilFromMemory(text.c_str(), &smil, 0);
  }
}

}  // namespace
}  // namespace mmsbrix::test
