#include "wsp/wsp_assigned_headers.h"

#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <set>
#include <string>

#include "support/diagnostics.h"

namespace WapAssignments {
namespace {

using mmsbrix::test::Reports;

const AssignmentsBase& table(int kind) {
  return *getTable(kind);
}

TEST(Assignments, TablesHaveTheAssignedRowCountsAndCase) {
  constexpr auto kRowCounts =
      std::to_array<std::size_t>({30, 74, 78, 11, 281, 42, 3, 2, 17, 12, 1, 1, 6, 1, 1});
  for (int kind = 0; kind < static_cast<int>(kRowCounts.size()); ++kind) {
    EXPECT_EQ(table(kind).rowCount, kRowCounts[static_cast<std::size_t>(kind)]) << kind;
    EXPECT_EQ(table(kind).caseSensitive != 0, kind == kPduTypes) << kind;
  }
}

TEST(Assignments, UnknownKindReportsAndHasNoTable) {
  Reports reports;
  EXPECT_EQ(getTable(-1), nullptr);
  EXPECT_EQ(getTable(15), nullptr);
  EXPECT_EQ(reports.texts(),
            "error wsp_assigned_headers: More WSP Header assignments?\n"
            "error wsp_assigned_headers: More WSP Header assignments?\n");
}

struct NameCase {
  int kind;
  const char* name;
  std::int32_t number;  // version index << 16 | code
};

TEST(Assignments, FirstRowOfANameWinsWithItsVersion) {
  const auto cases = std::to_array<NameCase>({
      {kHeaders, "content-type", 0x11},
      {kHeaders, "Cache-Control", 0x08},
      {kHeaders, "Accept-Charset", 0x01},
      {kHeaders, "Accept-Encoding", 0x2003C},
      {kHeaders, "Content-Range", 0x2003E},
      {kHeaders, "Content-Disposition", 0x2E},
      {kHeaders, "Profile-Warning", 0x10037},
      {kHeaders, "x-wap-security", 0x30046},
      {kHeaders, "X-Wap-Loc-Delivery", -1},
      {kParameters, "Type", 0x03},
      {kParameters, "TypeInMultipart", 0x10009},
      {kParameters, "Start", 0x1000A},
      {kParameters, "Filename", 0x06},
      {kParameters, "Path", 0x2000F},
      {kContentTypes, "application/vnd.wap.mms-message", 0x3003E},
      {kContentTypes, "MULTIPART/MIXED", 0x0C},
      {kContentTypes, "application/vnd.wv.csp+wbxml", 0x4004D},
      {kContentTypes, "application/smil", -1},
      {kRegisteredContentTypes, "application/vnd.nokia.syncset+wbxml", 0x20B},
      {kLanguages, "English", 0x19},
      {kLanguages, "en", 0x19},
      {kLanguages, "Bangla", 0x0E},
      {kLanguages, "Pashto,Pushto", 0x59},
      {kLanguages, "pl", -1},
      {kCharsets, "latin-1", 4},
      {kCharsets, "UTF-8", 106},
      {kPduTypes, "GET", 0x40},
      {kPduTypes, "get", -1},
      {kPduTypes, "", -1},
      {kTe, "Deflate", 0x86},
      {kCacheControl, "s-maxage", 0x8B},
      {kHeaders, "", -1},
  });
  for (const auto& [kind, name, number] : cases) {
    EXPECT_EQ(nameToNumber(table(kind), name), number) << kind << ' ' << name;
    EXPECT_EQ(isUnassigned(nameToNumber(table(kind), name)), number == -1) << name;
  }
}

struct CodeCase {
  int kind;
  std::uint32_t code;
  const char* name;  // empty for none
};

TEST(Assignments, FirstRowOfACodeWinsWhateverItsVersion) {
  const auto cases = std::to_array<CodeCase>({
      {kHeaders, 0x08, "Cache-Control"},
      {kHeaders, 0x3D, "Cache-Control"},
      {kHeaders, 0x47, "Cache-Control"},
      {kHeaders, 0x3B, "Accept-Charset"},
      {kHeaders, 0x44, "Profile-Warning"},
      {kHeaders, 0x48, ""},
      {kHeaders, 0x2003E, ""},  // a code, not a whole number
      {kParameters, 0x09, "Type"},
      {kParameters, 0x19, "Start"},
      {kParameters, 0x04, ""},
      {kContentTypes, 0x3E, "application/vnd.wap.mms-message"},
      {kContentTypes, 0x0A, "application/vnd.wap.catc"},
      {kLanguages, 0x19, "en"},
      {kLanguages, 0x58, "po"},
      {kLanguages, 0x8C, "rm"},
      {kCharsets, 4, "iso-8859-1"},
      {kCharsets, 1015, "utf-16"},
      {kPduTypes, 0x61, "PUT"},
      {kPduTypes, 0, ""},  // the end row has no name
      {kAcceptRanges, 0x81, "Bytes"},
      {kExpect, 0x80, "100-continue"},
  });
  for (const auto& [kind, code, expected] : cases) {
    const char* name = numberToName(table(kind), code);
    EXPECT_STREQ(name == nullptr ? "" : name, expected) << kind << ' ' << code;
  }
}

TEST(Assignments, RowWithoutNameEndsATableEarly) {
  constexpr StringInt kRows[] = {{"a", 1}, {nullptr, 2}, {"b", 3}};
  const AssignmentsBase cut{kRows, 3, 0};
  EXPECT_EQ(nameToNumber(cut, "b"), -1);
  EXPECT_EQ(numberToName(cut, 2), nullptr);
  EXPECT_EQ(numberToName(cut, 3), nullptr);
  EXPECT_STREQ(numberToName(cut, 1), "a");
}

// Tables are looked up by an index; a copy without one is walked row by row.
TEST(Assignments, AnIndexFindsWhatAWalkFinds) {
  for (int kind = kParameters; kind <= kSecurity; ++kind) {
    const AssignmentsBase& indexed = table(kind);
    const AssignmentsBase walked{indexed.rows, indexed.rowCount, indexed.caseSensitive};
    ASSERT_NE(indexed.index, nullptr);
    for (std::uint32_t code = 0; code <= 0x10000; ++code) {
      ASSERT_EQ(numberToName(indexed, code), numberToName(walked, code)) << kind << ' ' << code;
    }
    for (std::size_t i = 0; i < indexed.rowCount && indexed.rows[i].name != nullptr; ++i) {
      const std::string name = indexed.rows[i].name;
      std::string upper = name;
      for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      std::string other = name;
      other[other.size() / 3] ^= 1;
      for (const std::string& spelling : {name, upper, other, name + "x", name.substr(1)}) {
        ASSERT_EQ(nameToNumber(indexed, spelling), nameToNumber(walked, spelling))
            << kind << ' ' << spelling;
      }
    }
  }
}

TEST(Assignments, ContentTypesStandInCodeOrderAndLanguagesBeginWithTheirKey) {
  const AssignmentsBase& types = table(kContentTypes);
  for (std::size_t i = 0; i < types.rowCount; ++i) EXPECT_EQ(types.rows[i].code(), i);
  std::set<std::uint16_t> codes;
  const AssignmentsBase& languages = table(kLanguages);
  for (std::size_t i = 0; i < languages.rowCount; ++i) {
    if (codes.insert(languages.rows[i].code()).second) {
      EXPECT_EQ(std::string_view(languages.rows[i].name).size(), 2U) << languages.rows[i].name;
    }
  }
  EXPECT_EQ(codes.size(), 139U);
}

TEST(Assignments, StatusTextsCoverTheHttpNumbers) {
  EXPECT_STREQ(statusText(200), "OK");
  EXPECT_STREQ(statusText(302), "Moved temporarily");
  EXPECT_STREQ(statusText(505), "HTTP version not supported");
  EXPECT_EQ(statusText(306), nullptr);
  EXPECT_EQ(statusText(0), nullptr);
}

}  // namespace
}  // namespace WapAssignments
