// SMIL text as it comes: what is kept, what is left out, encodings, errors.
#include <gtest/gtest.h>

#include <random>
#include <typeinfo>

#include "mms/mmscodec.h"
#include "platform/charset.h"
#include "platform/xml.h"
#include "smil/smilcodec.h"
#include "support/parse_errors.h"
#include "support/smil.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

std::string read(const std::string& text) {
  CSMIL smil;
  return MMS_LoadSmilFromMemory(text.c_str(), &smil, 0) == 1 ? dump(smil) : "(refused)";
}

TEST(SmilReader, TypedNodesByTagWithTheirOwnSpelling) {
  CSMIL smil;
  ASSERT_EQ(MMS_LoadSmilFromMemory(
                "<SMIL><Head><LAYOUT type='t'><Root-Layout/><REGION/></LAYOUT></Head>"
                "<Body><PAR><IMG src='a'/><Text/><textStream/></PAR><seq x='1'><par/></seq></Body>"
                "</SMIL>",
                &smil, 0),
            1);
  EXPECT_EQ(dump(smil),
            "smil(head(layout[type=t](root-layout region)) "
            "body(par(IMG*[src=a] Text* textStream*) seq[x=1](par)))");
  EXPECT_NE(smil.GetHead()->GetLayout()->GetRootLayout(), nullptr);
  CSMILNode* region = smil.GetHead()->GetLayout()->Element(1);
  EXPECT_EQ(typeid(*region), typeid(CSMILRegion));
  EXPECT_EQ(typeid(*smil.GetBody()->Element(0)), typeid(CSMILPar));
  EXPECT_EQ(typeid(*smil.GetBody()->Element(1)), typeid(CSMILNode));
}

TEST(SmilReader, AttributesInDocumentOrderNamespacesIncludedLastValueWins) {
  EXPECT_EQ(read("<smil b='1' xmlns='u' a=\"x&lt;&#65;&#x20AC;\" xml:lang='fi' p:q='undeclared' "
                 "B='2'/>"),
            "smil[B=2 xmlns=u a=x<A\xE2\x82\xAC xml:lang=fi p:q=undeclared]");
  EXPECT_EQ(read("<smil a='1' b='' c='' d='' e='' f='' g='' h='' i='' A='2'/>"),
            "smil[A=2 b= c= d= e= f= g= h= i=]");
  EXPECT_EQ(read("<smil a=' x\n\ty '/>"), "smil[a= x  y ]") << "blanks are normalised";
}

TEST(SmilReader, BlanksGoAndAllOtherNodesAreCarriedAlong) {
  EXPECT_EQ(read("<?xml version='1.0'?><!-- before -->\r\n<smil>\n<!-- c --> t&amp;t <body>\n\t"
                 "<par/> &#32; <![CDATA[ ]]><?go on?></body>\n</smil><!-- behind -->"),
            "smil(#comment #text body(par #cdata-section #processing-instruction))");
  // ... and never written.
  CSMIL smil;
  MMS_LoadSmilFromMemory("<smil>text<!-- c --><body/><?par?></smil>", &smil, 0);
  unsigned char* buffer = nullptr;
  unsigned int length = 0;
  MMS_SaveSmilToMemory(&smil, &buffer, &length, 0);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), length), "<smil>\r\n\t<body/></smil>");
  MMS_Free(buffer);
}

TEST(SmilReader, DocumentTypesAndEntities) {
  constexpr const char* kTexts[][2] = {
      // Unreachable ones are left alone, on any scheme.
      {"<!DOCTYPE smil PUBLIC '-//W3C//DTD SMIL 2.0//EN' 'http://127.0.0.1:9/smil.dtd'>"
       "<smil a='1'/>",
       "smil[a=1]"},
      {"<!DOCTYPE smil SYSTEM 'no-such-file.dtd'><smil>&unknown;</smil>", "smil"},
      {"<!DOCTYPE smil [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><smil>&x;<body/></smil>",
       "smil(body)"},
      {"<!DOCTYPE smil [<!ENTITY % p SYSTEM 'file:///etc/passwd'> %p;]><smil/>", "smil"},
      {"<!DOCTYPE smil [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><smil a='&x;'/>", "(refused)"},
      // Those of the document itself count.
      {"<!DOCTYPE smil [<!ENTITY n 'b'><!ENTITY m 'a&n;'>]><smil a='&m;&m;'/>", "smil[a=abab]"},
      {"<!DOCTYPE smil [<!ELEMENT smil EMPTY>]><smil><body/></smil>", "smil(body)"},  // not valid
      {"<smil>&unknown;</smil>", "(refused)"}};
  for (const auto& [text, tree] : kTexts) EXPECT_EQ(read(text), tree) << text;
}

TEST(SmilReader, WhatADocumentTypeAddsToTheTree) {
  EXPECT_EQ(read("<!DOCTYPE smil [<!ENTITY s '<par/>'>]><smil>&s;<body>&s;</body></smil>"),
            "smil(par body(par))");
  EXPECT_EQ(read("<!DOCTYPE smil [<!ATTLIST par dur CDATA '5s' x CDATA #IMPLIED>]><smil><par/>"
                 "<par dur='1s'/></smil>"),
            "smil(par[dur=5s] par[dur=1s])");
  EXPECT_EQ(read("<!DOCTYPE smil [<!NOTATION n SYSTEM 'x'><!ENTITY e SYSTEM 'f' NDATA n>]><smil/>"),
            "smil");
}

// What a document tells, or that it is refused.
class Told final : public platform::XmlEvents {
 public:
  static std::string of(const std::string& text) {
    Told told;
    return platform::readXml(text, told) ? "(refused)" : told.all_;
  }
  void startElement(std::string_view name,
                    std::span<const platform::XmlAttribute> attributes) override {
    (all_ += '<') += name;
    for (const auto& [attribute, value] : attributes) {
      (((all_ += ' ') += attribute) += '=') += value;
    }
    all_ += '>';
  }
  void endElement() override { all_ += "</>"; }
  void other(const char* name) override { all_ += name; }
  void characters(std::string_view piece) override { all_ += piece; }

 private:
  std::string all_;
};

// A comment behind the document changes nothing but that it is no plain one any more.
TEST(SmilReader, PlainDocumentsTellWhatAParserTells) {
  constexpr std::string_view kTexts[] = {
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<smil a='1'\tb = \"x>y\"\r\n>\r\n\t<body >"
      "<par\n/> \n<x:y-.0_ xmlns:x='u' xml:lang='fi' a:='2'></x:y-.0_\t></body >\n</smil>\n ",
      " \n<a><b><c d=''/></b>\n\r\n<b e='f' g='h'/></a>"};
  constexpr std::string_view kInstead = "<>/='\"&!?-:.1aZ_ \t\r\n~\x7F\xC3\x01";
  for (const std::string_view text : kTexts) {
    ASSERT_NE(Told::of(std::string(text)), "(refused)");
    for (std::size_t i = 0; i < text.size(); ++i) {
      std::string changed(text.substr(0, i));
      EXPECT_EQ(Told::of(changed), Told::of(changed + "<!---->")) << changed;
      for (const char c : kInstead) {
        for (const std::size_t replaced : {1, 0}) {
          changed = std::string(text).replace(i, replaced, 1, c);
          EXPECT_EQ(Told::of(changed), Told::of(changed + "<!---->")) << changed;
        }
      }
    }
  }
  const auto nested = [](std::size_t depth) {
    std::string text;
    for (std::size_t i = 0; i < depth; ++i) text += "<a>";
    for (std::size_t i = 0; i < depth; ++i) text += "</a>";
    return text;
  };
  const auto wide = [](std::size_t elements) {
    std::string text = "<a>";
    for (std::size_t i = 1; i < elements; ++i) text += "<b/>";
    return text + "</a>";
  };
  for (const std::size_t more : {0, 1}) {
    for (const auto& text :
         {nested(platform::kMaxXmlDepth + more), wide(platform::kMaxXmlNodes + more)}) {
      EXPECT_EQ(Told::of(text) == "(refused)", more == 1);
      EXPECT_TRUE(Told::of(text) == Told::of(text + "<!---->"));
    }
  }
}

TEST(SmilReader, TheFileFormAddsTheMemoryFormReplaces) {
  const TemporaryFolder folder;
  const std::string path = folder.put("f", "<smil a='1'><body/></smil>");
  CSMIL smil;
  put(smil, "b", "2");
  EXPECT_EQ(MMS_LoadSmil(path.c_str(), &smil, 0), 1);
  EXPECT_EQ(MMS_LoadSmil(path.c_str(), &smil, 0), 1);
  EXPECT_EQ(dump(smil), "smil[b=2 a=1](body body)");
  EXPECT_EQ(MMS_LoadSmilFromMemory("<smil c='3'><head/></smil>", &smil, 0), 1);
  EXPECT_EQ(dump(smil), "smil[c=3](head)");
}

TEST(SmilReader, FilesInTheirEncodings) {
  const TemporaryFolder folder;
  const auto utf16 = [](const char* encoding, const std::string& mark) {
    return mark + *platform::convertCharset("<smil a='\xC3\xA4'/>", "utf-8", encoding);
  };
  const std::pair<std::string, std::string> kFiles[] = {
      {"<smil a='\xC3\xA4'/>", "\xC3\xA4"},
      {"\xEF\xBB\xBF<smil a='\xC3\xA4'/>", "\xC3\xA4"},
      {"<?xml version='1.0' encoding='UTF-8'?><smil a='\xC3\xA4'/>", "\xC3\xA4"},
      {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><smil a='\xE4'/>", "\xC3\xA4"},
      {"<?xml version='1.0' encoding='windows-1252'?><smil a='\x80'/>", "\xE2\x82\xAC"},
      {"<?xml version='1.0' encoding='iso-8859-5'?><smil a='\xD0'/>", "\xD0\xB0"},
      // Tolerance: writers of octets that claim UTF-16.
      {"<?xml version='1.0' encoding='UTF-16'?><smil a='\xC3\xA4'/>", "\xC3\xA4"},
      {utf16("utf-16le", "\xFF\xFE"), "\xC3\xA4"},
      {utf16("utf-16be", "\xFE\xFF"), "\xC3\xA4"},
      {utf16("utf-16le", ""), "\xC3\xA4"}};
  for (const auto& [octets, value] : kFiles) {
    CSMIL smil;
    ASSERT_EQ(MMS_LoadSmil(folder.put("f", octets).c_str(), &smil, 0), 1) << octets;
    EXPECT_EQ(dump(smil), "smil[a=" + value + "]") << octets;
  }
  ParseErrors errors;
  for (const char* octets :
       {"<smil a='\xE4'/>", "<?xml version='1.0' encoding='x//T'?><smil/>", "\xFF\xFE<"}) {
    CSMIL smil;
    EXPECT_EQ(MMS_LoadSmil(folder.put("f", octets).c_str(), &smil, 0), 0) << octets;
    EXPECT_NE(errors.take(), "");
  }
}

TEST(SmilReader, TextInMemoryIsUtf8OrElseWindows1252) {
  EXPECT_EQ(read("\xEF\xBB\xBF<smil a='\xC3\xA4'/>"), "smil[a=\xC3\xA4]");
  EXPECT_EQ(read("<smil a='\xE4\x80'/>"), "smil[a=\xC3\xA4\xE2\x82\xAC]");
  EXPECT_EQ(read("<?xml version='1.0' encoding='ISO-8859-1'?><smil a='\xC3\xA4'/>"),
            "smil[a=\xC3\xA4]");
}

TEST(SmilReader, MalformedTextIsReportedAndLeavesTheTree) {
  ParseErrors errors;
  const TemporaryFolder folder;
  const std::pair<const char*, const char*> kTexts[] = {
      {"<smil>\n<body></smil>", "Error on line 2, position 14: Opening and ending tag mismatch"},
      {"<smil", "Error on line 1, position 6: "},
      {"<smil a=1/>", "Error on line 1, position 9: "},
      {"<smil/>\n\n<smil/>", "Error on line 3, position 1: "},
      {"<smil a='1' a='2'/>", "Error on line 1, position "},
      {"<smil a='\x01'/>", "Error on line 1, position "},
      {"", "Error on line 0, position 0: The document is empty"},
      {"plain", "Error on line 1, position 1: "}};
  for (const auto& [text, report] : kTexts) {
    CSMIL smil;
    put(smil, "kept", "1");
    EXPECT_EQ(MMS_LoadSmilFromMemory(text, &smil, 0), 0) << text;
    const std::string reported = errors.take();
    EXPECT_EQ(reported.substr(0, std::string(report).size()), report) << reported;
    EXPECT_EQ(std::count(reported.begin(), reported.end(), '\n'), 1) << reported;
    EXPECT_EQ(MMS_LoadSmil(folder.put("f", text).c_str(), &smil, 0), 0) << text;
    EXPECT_EQ(errors.take(), reported);
    EXPECT_EQ(dump(smil), "smil[kept=1]");
  }
  CSMIL smil;
  EXPECT_EQ(MMS_LoadSmil(folder.path("none").c_str(), &smil, 0), 0);
  EXPECT_EQ(errors.take(), "Error on line 0, position 0: The file cannot be opened\n");
  EXPECT_EQ(MMS_LoadSmil(folder.put("f", std::string("<smil\n \0/>", 10)).c_str(), &smil, 0), 0);
  EXPECT_EQ(errors.take(), "Error on line 2, position 2: A zero octet is no character\n");
}

TEST(SmilReader, AnotherRootIsRefusedWithoutAMessage) {
  ParseErrors errors;
  CSMIL smil;
  put(smil, "kept", "1");
  EXPECT_EQ(MMS_LoadSmilFromMemory("<html><smil/></html>", &smil, 0), 0);
  EXPECT_EQ(MMS_LoadSmilFromMemory(nullptr, &smil, 0), 0);
  EXPECT_EQ(MMS_LoadSmilFromMemory("<smil/>", nullptr, 0), 0);
  EXPECT_EQ(MMS_LoadSmil(nullptr, &smil, 0), 0);
  EXPECT_EQ(errors.take(), "");
  EXPECT_EQ(dump(smil), "smil[kept=1]");
}

// The handler may fail, read, and replace itself; without one nothing happens.
TEST(SmilReader, TheHandlerIsFree) {
  CSMIL smil;
  int calls = 0;
  setParseErrorHandler([&](const std::string&, const std::string&) {
    ++calls;
    passOverParseErrors();
    EXPECT_EQ(MMS_LoadSmilFromMemory("<smil", &smil, 0), 0);
    throw 1;
  });
  EXPECT_EQ(MMS_LoadSmilFromMemory("<smil", &smil, 0), 0);
  EXPECT_EQ(MMS_LoadSmilFromMemory("<smil", &smil, 0), 0);
  EXPECT_EQ(calls, 1);
}

// Any tree with names that XML allows comes back as it was written.
TEST(SmilReader, WhatIsWrittenIsReadBack) {
  std::mt19937 random(2026);
  const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  constexpr const char* kTags[] = {"head", "layout", "region", "body", "par",
                                   "img",  "TEXT",   "x:y",    "seq",  "\xC3\xA4"};
  constexpr const char* kPieces[] = {
      "a", "<", ">", "&", "\"", "'", "\t", "\r\n", "\xC3\xA4", "&#", "\xF0\x9F\x98\x80", " "};
  for (int round = 0; round < 200; ++round) {
    CSMIL smil;
    std::vector<CSMILNode*> nodes{&smil};
    for (unsigned i = below(40); i > 0; --i) {
      const char* tag = kTags[below(std::size(kTags))];
      // Read once, so that it is of the class that a reader gives it.
      CSMIL holder;
      MMS_LoadSmilFromMemory(("<smil><" + std::string(tag) + "/></smil>").c_str(), &holder, 0);
      nodes.push_back(
          append(*nodes[below(static_cast<unsigned>(nodes.size()))], holder.Element(0)));
      holder.ElementClear();
      for (unsigned n = below(4); n > 0; --n) {
        std::string value;
        for (unsigned p = below(6); p > 0; --p) value += kPieces[below(std::size(kPieces))];
        put(*nodes.back(), std::string(n, 'n').c_str(), value.c_str());
      }
    }
    unsigned char* buffer = nullptr;
    unsigned int length = 0;
    ASSERT_EQ(MMS_SaveSmilToMemory(&smil, &buffer, &length, 0), 1);
    const std::string text(reinterpret_cast<char*>(buffer), length);
    MMS_Free(buffer);
    ASSERT_EQ(read(text), dump(smil)) << text;
  }
}

}  // namespace
}  // namespace mmsbrix::test
