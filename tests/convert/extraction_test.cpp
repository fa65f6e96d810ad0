// Every part as a file, whatever the message says that it is called.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "convert/extraction.h"
#include "convert/file_names.h"
#include "support/messages.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

struct Header {
  const char* name;
  const char* value;
};

CMMPart part(const char* type, const std::string& content, std::vector<Header> headers = {},
             const char* parameter = "", const char* value = "") {
  CMMPart made;
  CMMHdr contentType("Content-Type", type);
  CMMParam own(parameter, value);
  contentType.Params()->Add(&own);
  made.Headers()->Add(&contentType);
  for (const Header& row : headers) {
    CMMHdr header(row.name, row.value);
    made.Headers()->Add(&header);
  }
  made.SetContent(content.data(), static_cast<int>(content.size()));
  return made;
}

CMMsg mixed(const std::vector<CMMPart>& parts) {
  CMMsg message;
  CMMHdr type("Content-Type", "application/vnd.wap.multipart.mixed");
  message.Content()->Headers()->Add(&type);
  for (const CMMPart& child : parts) message.Content()->AddChild(&child);
  return message;
}

// The names that the parts' files got.
std::vector<std::string> names(const std::vector<ExtractedPart>& parts) {
  std::vector<std::string> all;
  for (const ExtractedPart& row : parts) {
    all.push_back(row.error != 0 ? "error " + std::to_string(row.error)
                                 : fs::path(row.path).filename().string());
  }
  return all;
}

TEST(HarmlessNames, KeepWhatPeopleReadAndNothingElse) {
  const std::pair<std::string, std::string> kNames[] = {
      {"photo 1.jpg", "photo 1.jpg"},
      {"\xC3\xA4iti.txt", "\xC3\xA4iti.txt"},
      {"\xE4iti.txt", "\xC3\xA4iti.txt"},  // Windows-1252
      {"../../etc/passwd", "passwd"},
      {"..\\..\\boot.ini", "boot.ini"},
      {"C:\\a.jpg", "a.jpg"},
      {"http://host/a.jpg?b=c", "a.jpg_b=c"},
      {"/etc/", ""},
      {"..", ""},
      {".", ""},
      {" . ", ""},
      {".bashrc", "bashrc"},
      {"-rf", "_rf"},
      {"a.jpg. .", "a.jpg"},
      {"a:b*c?d\"e<f>g|h", "a_b_c_d_e_f_g_h"},
      {"a\nb\x7F"
       "c\xC2\x85"
       "d",
       "a_b_c_d"},
      {"photo\xE2\x80\xAEgpj.exe", "photo_gpj.exe"},  // would read backwards
      {"CON", "_CON"},
      {"nul.txt", "_nul.txt"},
      {"Com1 .a.b", "_Com1 .a.b"},
      {"lpt\xC2\xB2", "_lpt\xC2\xB2"},
      {"com10", "com10"},
      {"console", "console"}};
  for (const auto& [proposed, name] : kNames)
    EXPECT_EQ(harmlessFileName(proposed), name) << proposed;
  const std::string longName =
      harmlessFileName(std::string(99, 'a') + "\xC3\xA4" + std::string(5000, 'b') + ".jpeg");
  EXPECT_EQ(longName, std::string(95, 'a') + ".jpeg");
  EXPECT_EQ(harmlessFileName("x" + std::string(99, '\xE4')).size(), 99U) << "between characters";
}

TEST(Extraction, NamesAndExtensions) {
  const TemporaryFolder folder;
  const CMMsg message =
      mixed({part("image/jpeg", "1", {{"Content-Location", "../a.jpg"}, {"Content-ID", "<x>"}}),
             part("image/jpeg", "2", {{"Content-ID", "<x@y>"}}),
             part("image/jpeg", "3", {{"Content-Location", ".."}}, "name", "n.jpg"),
             part("image/jpeg", "4", {{"Content-Location", "/x/a.jpg"}}),
             part("image/jpeg", "5", {{"Content-Location", "<1>"}}), part("x-own/type", "6"),
             part("image/jpeg", "7"), part("text/plain", "8", {{"Content-Location", "a.jpg"}})});
  const auto parts = extractParts(message, folder.path());
  EXPECT_THAT(names(parts), ElementsAre("a.jpg", "x@y.jpg", "n.jpg", "a #2.jpg", "1.jpg", "part",
                                        "part.jpg", "a #3.jpg"));
  EXPECT_EQ(parts[1].contentId, "<x@y>");
  EXPECT_EQ(parts[1].mediaType, "image/jpeg");
  EXPECT_EQ(folder.get("a #3.jpg"), "8");
  EXPECT_EQ(folder.entries(), 8);
}

TEST(Extraction, AttacksOnTheFolderFail) {
  const TemporaryFolder outside;
  const TemporaryFolder folder;
  const std::string inner = folder.path("in");
  fs::create_directory(inner);
  outside.put("mine", "mine");
  fs::create_symlink(outside.path("mine"), inner + "/a.jpg");
  fs::create_symlink(outside.path("new"), inner + "/a #2.jpg");
  const auto parts = extractParts(
      mixed({part("image/jpeg", "x", {{"Content-Location", "a.jpg"}}),
             part("image/jpeg", "x", {{"Content-Location", "../b.jpg"}}),
             part("image/jpeg", "x", {{"Content-Location", (outside.path() + "c.jpg").c_str()}}),
             part("image/jpeg", "x", {{"Content-Location", "a.jpg/../d"}})}),
      inner);
  EXPECT_THAT(names(parts), ElementsAre("a #3.jpg", "b.jpg", "c.jpg", "d.jpg"));
  EXPECT_EQ(outside.get("mine"), "mine");
  EXPECT_EQ(outside.entries(), 1);
  EXPECT_EQ(folder.entries(), 1);
  EXPECT_THAT(names(extractParts(mixed({part("a/b", "x")}), folder.path("none"))),
              ElementsAre("error 2"));
}

TEST(Extraction, SinglePartsAndMultipartsWithin) {
  const TemporaryFolder folder;
  CMMsg single;
  *single.Content() = part("text/plain", "alone");
  EXPECT_THAT(names(extractParts(single, folder.path())), ElementsAre("part.txt"));
  EXPECT_THAT(names(extractParts(CMMsg(), folder.path())), ElementsAre());

  // A multipart's octets within a part: one entry, headers of 1 octet (text/plain), 2 octets.
  const std::string inner(
      "\x01\x01\x02\x83"
      "ab",
      6);
  CMMPart tree = part("application/vnd.wap.multipart.mixed", "");
  for (const CMMPart& child : {part("image/gif", "g"), part("image/png", "p")})
    tree.AddChild(&child);
  const auto parts = extractParts(mixed({part("application/vnd.wap.multipart.alternative", inner),
                                         tree, part("application/vnd.wap.multipart.mixed", "")}),
                                  folder.path());
  EXPECT_THAT(names(parts), ElementsAre("part #2.txt", "part.gif", "part.png", "part"));
  EXPECT_EQ(folder.get("part #2.txt"), "ab");
  // Deeper than anyone nests: the rest is saved as it stands, and nothing overflows.
  CMMsg deep;
  std::string octets = inner;
  for (int i = 0; i < 20; ++i) {
    octets = std::string("\x01\x01", 2) + static_cast<char>(octets.size()) + "\xA3" + octets;
  }
  *deep.Content() = part("application/vnd.wap.multipart.mixed", octets);
  EXPECT_EQ(extractParts(deep, folder.path()).size(), 1U);
}

TEST(Extraction, TransferEncodingsAreUndone) {
  struct Case {
    const char* encoding;
    std::string content;
    std::string decoded;
  };
  const Case kCases[] = {
      {"base64", "/9j/4A==\r\n", "\xFF\xD8\xFF\xE0"},
      {"BASE64", "AAEC\nAw", std::string("\0\1\2\3", 4)},
      {"base64", std::string("\xFF\xD8\xFF\xE0", 4), "\xFF\xD8\xFF\xE0"},  // is none
      {"base64", "AA==AA", "AA==AA"},
      {"quoted-printable", "a=3Db=e4=\r\nc= \t\nd=",
       "a=b\xE4"
       "cd"},
      {"quoted-printable", "1=2 =ZZ =4", "1=2 =ZZ =4"},
      {"binary", "=41", "=41"}};
  for (const Case& row : kCases) {
    EXPECT_EQ(
        decodedContent(part("a/b", row.content, {{"Content-Transfer-Encoding", row.encoding}})),
        row.decoded)
        << row.content;
  }
}

TEST(Extraction, TextsInTheirCharsetOrInUtf8) {
  struct Case {
    const char* charset;
    std::string content;
    std::string utf8;
  };
  const Case kCases[] = {
      {"utf-8", "\xC3\xA4", "\xC3\xA4"},
      {"iso-8859-1", "\xE4", "\xC3\xA4"},
      {"utf-16be", std::string("\0\xE4", 2), "\xC3\xA4"},
      {"utf-8", std::string("\xFF\xFE\xE4\0", 4), "\xC3\xA4"},  // as an extraction left it
      {"us-ascii", "\xE4", "\xC3\xA4"},                         // labelled wrongly
      {"utf-8", "\x80", "\xE2\x82\xAC"},
      {"x-unknown", "\xC3\xA4", "\xC3\xA4"},
      {"", "\xE4", "\xC3\xA4"}};
  for (const Case& row : kCases) {
    const TemporaryFolder folder;
    const CMMsg message = mixed({part("text/plain", row.content, {}, "charset", row.charset),
                                 part("image/gif", row.content, {}, "charset", row.charset)});
    extractParts(message, folder.path());
    EXPECT_EQ(folder.get("part.txt"), row.content) << row.charset;
    extractParts(message, folder.path(), {.textToUtf8 = true});
    EXPECT_EQ(folder.get("part #2.txt"), row.utf8) << row.charset;
    EXPECT_EQ(folder.get("part #2.gif"), row.content) << row.charset;
  }
}

TEST(Extraction, MultipartsWithinEachOtherAreOpenedToALimit) {
  const TemporaryFolder folder;
  std::string body = "x";
  for (unsigned i = 0; i < kMaxExtractedNesting + 3; ++i) {
    // One entry of type multipart/mixed; the lengths stay below 128.
    body = std::string("\1\1", 2) + static_cast<char>(body.size()) + '\xA3' + body;
  }
  CMMsg message;
  const CMMHdr type("Content-Type", "application/vnd.wap.multipart.mixed");
  message.Content()->Headers()->Add(&type);
  message.Content()->SetContent(body.data(), static_cast<int>(body.size()));
  const auto parts = extractParts(message, folder.path());
  ASSERT_EQ(parts.size(), 1U);
  // Each level took four octets; what is left is a multipart still.
  EXPECT_EQ(parts[0].octets, body.size() - 4 * kMaxExtractedNesting);
}

TEST(Extraction, AMessageMayAskForSoManyFiles) {
  const TemporaryFolder folder;
  CMMsg message;
  for (std::size_t i = 0; i < kMaxExtractedFiles + 5; ++i) {
    message.Content()->NewChild()->SetContent("x", 1);
  }
  EXPECT_EQ(extractParts(message, folder.path()).size(), kMaxExtractedFiles);
  EXPECT_EQ(folder.entries(), static_cast<std::ptrdiff_t>(kMaxExtractedFiles));
}

}  // namespace
}  // namespace mmsbrix::test
