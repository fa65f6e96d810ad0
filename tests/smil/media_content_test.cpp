// Content of media elements, from and to memory, files and streams.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "octet_stream.h"
#include "support/smil.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

std::string content(const CSMILMedia& media) {
  if (media.GetContent() == nullptr) return media.GetContentLen() == 0 ? "(none)" : "(broken)";
  const auto length = static_cast<std::size_t>(media.GetContentLen());
  if (media.GetContent()[length] != 0) return "(no zero behind it)";
  return {reinterpret_cast<const char*>(media.GetContent()), length};
}

CSMILMedia filled() {
  CSMILMedia media("img");
  media.PutContent("old", 3);
  return media;
}

TEST(MediaContent, IsCopiedWithAZeroBehindIt) {
  CSMILMedia media = filled();
  EXPECT_TRUE(media.PutContent("a\0b", 3));
  EXPECT_EQ(content(media), std::string("a\0b", 3));
  EXPECT_TRUE(media.PutContent(media.GetContent() + 2, 1));  // out of itself
  EXPECT_EQ(content(media), "b");
  EXPECT_TRUE(media.PutContent("", 0));
  EXPECT_EQ(content(media), "");
  for (const auto& [data, length] : {std::pair<const char*, int>{nullptr, 5}, {"x", -1}}) {
    media = filled();
    EXPECT_TRUE(media.PutContent(data, length));
    EXPECT_EQ(content(media), "(none)");
  }
}

TEST(MediaContent, FromAndToFiles) {
  const TemporaryFolder folder;
  const std::string path = folder.put("in", std::string("a\0b", 3));
  CSMILMedia media = filled();
  EXPECT_TRUE(media.Load(path.c_str()));
  EXPECT_EQ(content(media), std::string("a\0b", 3));
  EXPECT_TRUE(media.Save(folder.put("out", "something longer").c_str()));
  EXPECT_EQ(folder.get("out"), std::string("a\0b", 3));
  EXPECT_FALSE(media.Save(folder.path("no/such").c_str()));

  EXPECT_FALSE(media.Load(folder.path("none").c_str()));
  EXPECT_EQ(content(media), "(none)") << "the old content goes before the file is opened";
  EXPECT_FALSE(media.Save(folder.path("never").c_str()));
  EXPECT_EQ(folder.entries(), 2);
  media = filled();
  EXPECT_TRUE(media.Load(static_cast<const char*>(nullptr)));
  EXPECT_EQ(content(media), "(none)");
}

// A stream over a text that reads `step` octets at a time and fails where it is told to.
class TextStream final : public OctetStream {
 public:
  bool read(void* buffer, StreamOctets octets, StreamOctets& done) override {
    if (failing == 'r') return false;
    const std::size_t now =
        std::min({std::size_t{octets}, text.size() - position, std::size_t{step}});
    std::memcpy(buffer, text.data() + position, now);
    position += now;
    done = static_cast<StreamOctets>(now);
    return true;
  }
  bool write(const void* buffer, StreamOctets octets) override {
    if (failing == 'w') return false;
    text.append(static_cast<const char*>(buffer), octets);
    return true;
  }
  bool seek(std::int64_t distance, std::uint32_t origin) override {
    if (failing == 's') return false;
    if (origin == 0) position = static_cast<std::size_t>(distance);
    return true;
  }
  bool size(std::uint64_t& octets) override {
    octets = statedSize.value_or(text.size());
    return failing != 't';
  }

  std::string text;
  std::size_t position = 0;
  std::uint32_t step = 2;
  std::optional<std::uint64_t> statedSize;
  char failing = ' ';
};

TEST(MediaContent, FromAndToStreams) {
  TextStream stream;
  stream.text = "octets";
  stream.position = 4;
  CSMILMedia media = filled();
  EXPECT_TRUE(media.Load(&stream));
  EXPECT_EQ(content(media), "octets") << "from the beginning, whatever the position";
  EXPECT_TRUE(media.Save(&stream));
  EXPECT_EQ(stream.text, "octetsoctets");
  stream.failing = 'w';
  EXPECT_FALSE(media.Save(&stream));
  EXPECT_FALSE(CSMILMedia("img").Save(&stream));
}

TEST(MediaContent, StreamsThatFailOrLie) {
  struct Case {
    char failing;
    std::optional<std::uint64_t> statedSize;
    std::string left;
  };
  const Case kCases[] = {
      {'t', std::nullopt, "(none)"},
      {'s', std::nullopt, "(none)"},
      {'r', std::nullopt, std::string(6, '\0')},
      {' ', 8, std::string("octets\0\0", 8)},
      {' ', std::uint64_t{1} << 40, "(none)"},
  };
  for (const Case& row : kCases) {
    TextStream stream;
    stream.text = "octets";
    stream.failing = row.failing;
    stream.statedSize = row.statedSize;
    CSMILMedia media = filled();
    EXPECT_FALSE(media.Load(&stream)) << row.failing;
    EXPECT_EQ(content(media), row.left) << row.failing;
  }
}

}  // namespace
}  // namespace mmsbrix::test
