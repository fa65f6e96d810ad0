// Every allocation fails once in turn: what was asked for fails as documented or is as complete as
// ever, nothing is leaked, no file is left over, and the same objects do it when there is memory
// again.
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "convert/extraction.h"
#include "convert/mmsconvert.h"
#include "failing_allocator.h"
#include "mms/inspector.h"
#include "smil/parse_error.h"
#include "smil/smilcodec.h"
#include "support/messages.h"
#include "support/temporary_folder.h"
#include "wsp/header_block.h"

namespace mmsbrix::test {
namespace {

/// Does something and gives its outcome as a short text, which takes no memory; nothing when it
/// failed for lack of memory, as its documentation says it may.
using Operation = std::function<std::optional<std::string>()>;
using Step = std::function<void()>;

// Runs `operation` with every allocation failing in turn, `prepare` before each; `check` looks at
// what a failure leaves.  Returns how many failures there were.
std::size_t failEach(
    const Operation& operation, const Step& check = [] {}, const Step& prepare = [] {}) {
  prepare();
  const std::optional<std::string> expected = operation();
  EXPECT_TRUE(expected.has_value());
  std::size_t failures = 0;
  bool reached = true;
  // Fails, then does it again with memory.
  const auto tryOut = [&](std::size_t failing) {
    prepare();
    std::optional<std::string> outcome;
    {
      const AllocationScope scope(failing);
      outcome = operation();
      reached = scope.count() > failing;
    }
    if (outcome) {
      EXPECT_EQ(outcome, expected);
    } else {
      ++failures;
      check();
    }
    prepare();
    EXPECT_EQ(operation(), expected);
  };
  for (std::size_t failing = 0; reached && !testing::Test::HasFailure(); ++failing) {
    SCOPED_TRACE("allocation " + std::to_string(failing) + " fails");
    tryOut(failing);  // what is made once in a process is made by the first time
    const long before = liveBlocks();
    tryOut(failing);
    EXPECT_EQ(liveBlocks(), before) << "blocks leaked";
  }
  return failures;
}

std::string completeOctets() {
  CMMsg message;
  fillComplete(message);
  const auto octets = encode(message);
  return {octets.begin(), octets.end()};
}

TEST(LackOfMemory, EncodingHandsNothingOver) {
  CMMsg message;
  fillComplete(message);
  const std::string expected = completeOctets();
  EXPECT_GT(failEach([&]() -> std::optional<std::string> {
              void* data = &message;
              unsigned size = 1;
              if (MMS_SaveToMemory(&message, &data, &size, 0) == 0) {
                EXPECT_EQ(data, nullptr);
                EXPECT_EQ(size, 0U);
                return std::nullopt;
              }
              const bool same = std::string_view(static_cast<const char*>(data), size) == expected;
              MMS_Free(data);
              return same ? "same" : "other";
            }),
            0U);
}

TEST(LackOfMemory, SavingLeavesTheOldFile) {
  const TemporaryFolder folder;
  CMMsg message;
  fillComplete(message);
  const std::string path = folder.put("m.mms", "old");
  EXPECT_GT(failEach(
                [&]() -> std::optional<std::string> {
                  if (MMS_Save(&message, path.c_str(), 0) == 0) return std::nullopt;
                  return "saved";
                },
                [&] {
                  EXPECT_EQ(folder.entries(), 1);
                  EXPECT_NE(folder.get("m.mms"), "");
                }),
            0U);
}

TEST(LackOfMemory, DecodingLeavesAClearedMessage) {
  const std::string octets = completeOctets();
  CMMsg message;
  EXPECT_GT(failEach(
                [&]() -> std::optional<std::string> {
                  if (MMS_LoadFromMemory(octets.data(), static_cast<unsigned>(octets.size()),
                                         &message, 0) == 0) {
                    return std::nullopt;
                  }
                  return std::to_string(message.Content()->ChildCount());
                },
                [&] {
                  EXPECT_EQ(message.GetTransactionId(), nullptr);
                  EXPECT_EQ(message.Content()->ChildCount(), 0U);
                }),
            20U);
}

TEST(LackOfMemory, InspectingAndHeaderBlocks) {
  const std::string octets = completeOctets();
  EXPECT_GT(failEach([&]() -> std::optional<std::string> {
              try {
                const Inspection seen = inspect(octets.data(), octets.size());
                return std::to_string(seen.fields.size());
              } catch (const std::bad_alloc&) {
                return std::nullopt;
              }
            }),
            20U);
  const std::vector<HeaderField> fields = {{"Accept", "text/plain; q=0.5, image/jpeg"},
                                           {"X-Own", "a value that is no short one"},
                                           {"Cache-Control", "private=\"Accept\""}};
  EXPECT_GT(
      failEach([&]() -> std::optional<std::string> {
        try {
          const EncodedHeaders block = encodeHeaderBlock(fields);
          const DecodedHeaders back = decodeHeaderBlock(block.octets.data(), block.octets.size());
          return std::to_string(block.octets.size()) + ' ' + std::to_string(back.fields.size());
        } catch (const std::bad_alloc&) {
          return std::nullopt;
        }
      }),
      10U);
}

constexpr char kSlides[] =
    "<smil title='&quot;'><head><layout><root-layout width='160'/></layout></head><body>"
    "<par dur='5000ms'><img src='cid:hei.txt-and-a-name-that-is-long' region='Image'/>"
    "<text src='cid:b'>words</text></par></body></smil>";

TEST(LackOfMemory, ReadingSmilLeavesTheTree) {
  CSMIL smil;
  setParseErrorHandler([](const std::string&, const std::string& reason) {
    ADD_FAILURE() << "the document is not to blame: " << reason;
  });
  const auto read = [&]() -> std::optional<std::string> {
    if (MMS_LoadSmilFromMemory(kSlides, &smil, 0) == 0) return std::nullopt;
    return std::to_string(smil.ElementCount());
  };
  EXPECT_GT(failEach(read,
                     [&] {
                       EXPECT_EQ(smil.ElementCount(), 2U);
                       EXPECT_NE(smil.GetBody(), nullptr);
                     }),
            20U);
  const TemporaryFolder folder;
  const std::string path = folder.put("s.smil", kSlides);
  EXPECT_GT(failEach([&]() -> std::optional<std::string> {
              CSMIL onto;
              if (MMS_LoadSmil(path.c_str(), &onto, 0) == 0) {
                EXPECT_EQ(onto.ElementCount(), 0U);
                return std::nullopt;
              }
              return std::to_string(onto.ElementCount());
            }),
            20U);
  setParseErrorHandler(nullptr);
}

TEST(LackOfMemory, WritingAndCopyingSmil) {
  CSMIL smil;
  ASSERT_EQ(MMS_LoadSmilFromMemory(kSlides, &smil, 0), 1);
  EXPECT_GT(failEach([&]() -> std::optional<std::string> {
              unsigned char* text = nullptr;
              unsigned length = 0;
              if (MMS_SaveSmilToMemory(&smil, &text, &length, 0) == 0) return std::nullopt;
              MMS_Free(text);
              return std::to_string(length);
            }),
            0U);
  CMMsg message;
  message.SetTransactionId("kept");
  for (unsigned i = 0; i < 2; ++i) {
    dynamic_cast<CSMILMedia&>(*smil.GetBody()->Element(0)->Element(i)).PutContent("octets", 6);
  }
  EXPECT_GT(failEach([&]() -> std::optional<std::string> {
              if (MMS_SmilToMMS(&smil, &message, 0) == 0) return std::nullopt;
              const CMMPart* part = message.Content()->Child(1);
              return part == nullptr ? "lost" : std::to_string(part->GetContentLen());
            }),
            20U);
  EXPECT_STREQ(message.GetTransactionId(), "kept");
}

TEST(LackOfMemory, ExtractionLeavesNoFile) {
  const TemporaryFolder folder;
  const auto removeAll = [&] {
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
      std::filesystem::remove(entry);
    }
  };
  const auto isEmpty = [&] { EXPECT_EQ(folder.entries(), 0); };
  CMMsg message;
  fillComplete(message);
  const std::string target = folder.path("");
  EXPECT_GT(
      failEach(
          [&]() -> std::optional<std::string> {
            try {
              return std::to_string(extractParts(message, target, {.textToUtf8 = true}).size());
            } catch (const std::bad_alloc&) {
              return std::nullopt;
            }
          },
          isEmpty, removeAll),
      20U);

  CSMIL slides;
  ASSERT_EQ(MMS_LoadSmilFromMemory(kSlides, &slides, 0), 1);
  dynamic_cast<CSMILMedia&>(*slides.GetBody()->Element(0)->Element(0)).PutContent("octets", 6);
  dynamic_cast<CSMILMedia&>(*slides.GetBody()->Element(0)->Element(1)).PutContent("words", 5);
  ASSERT_EQ(MMS_SmilToMMS(&slides, &message, 0), 1);
  CSMIL presentation;
  CMMsg taken;
  EXPECT_GT(failEach(
                [&]() -> std::optional<std::string> {
                  if (MMS_MMSToSmil(&taken, &presentation, target.c_str(), 0) == 0) {
                    return std::nullopt;
                  }
                  return "1";
                },
                isEmpty,
                [&] {
                  removeAll();
                  taken = message;
                }),
            20U);
}

}  // namespace
}  // namespace mmsbrix::test
