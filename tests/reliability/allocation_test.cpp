// Every allocation fails once in turn: what was asked for fails as documented or is as complete as
// ever, nothing is leaked, no file is left over, and the same objects do it when there is memory
// again.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <new>
#include <numeric>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "convert/extraction.h"
#include "convert/mmsconvert.h"
#include "failing_allocator.h"
#include "mms/inspector.h"
#include "mms/message_view.h"
#include "smil/parse_error.h"
#include "smil/smilcodec.h"
#include "support/messages.h"
#include "support/smil.h"
#include "support/temporary_folder.h"
#include "wsp/header_block.h"

namespace mmsbrix::test {
namespace {

/// Does something and gives its outcome as a short text, which takes no memory; nothing when it
/// failed for lack of memory, as its documentation says it may.
using Operation = std::function<std::optional<std::string>()>;
/// What stands around each run of an operation.
struct Around {
  std::function<void()> prepare = [] {};
  /// Looks at what a failure leaves.
  std::function<void()> failed = [] {};
  /// All that a success made, as text: the same one whenever it is one.
  std::function<std::string()> made = [] { return std::string(); };
};

// Runs `operation` with every allocation failing in turn.  Returns how many failures there were.
std::size_t failEach(const Operation& operation, const Around& around = {}) {
  around.prepare();
  const std::optional<std::string> expected = operation();
  EXPECT_TRUE(expected.has_value());
  const std::string complete = around.made();
  std::size_t failures = 0;
  bool reached = true;
  // Fails, then does it again with memory.
  const auto tryOut = [&](std::size_t failing) {
    around.prepare();
    std::optional<std::string> outcome;
    {
      const AllocationScope scope(failing);
      outcome = operation();
      reached = scope.count() > failing;
    }
    if (outcome) {
      EXPECT_EQ(outcome, expected);
      EXPECT_EQ(around.made(), complete);
    } else {
      ++failures;
      around.failed();
    }
    around.prepare();
    EXPECT_EQ(operation(), expected);
    EXPECT_EQ(around.made(), complete);
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

std::string octetsOf(CMMsg& message) {
  const auto octets = encode(message);
  return {octets.begin(), octets.end()};
}

std::string completeOctets() {
  CMMsg message;
  fillComplete(message);
  return octetsOf(message);
}

std::string text(const std::vector<HeaderField>& fields) {
  std::string all;
  for (const HeaderField& field : fields) all += field.name + ": " + field.value + '\n';
  return all;
}

// Names and contents, by name.
std::string files(const TemporaryFolder& folder) {
  std::set<std::string> all;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
    const std::string name = entry.path().filename().string();
    all.insert(name + ": " + folder.get(name) + '\n');
  }
  return std::accumulate(all.begin(), all.end(), std::string());
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

// So that nobody adds a copy unseen: views take nothing, an encoding its octets, a decoding what is
// kept of the message.
TEST(LackOfMemory, LittleIsAskedFor) {
  const std::string octets = completeOctets();
  CMMsg message;
  fillComplete(message);
  const auto taken = [](const auto& operation) {
    operation();  // what is made once in a process
    const AllocationScope scope;
    operation();
    return scope.count();
  };
  std::size_t seen = 0;
  EXPECT_EQ(taken([&] {
              auto each = [&](const auto&) { return ++seen != 0; };
              const MessageView view(octets.data(), static_cast<unsigned>(octets.size()));
              view.contentType().eachParameter(each);
              view.eachField(each);
              view.eachPart([&](const PartView& part) {
                part.eachHeader(each);
                return true;
              });
            }),
            0U);
  EXPECT_GT(seen, 40U);
  EXPECT_EQ(taken([&] {
              void* data = nullptr;
              unsigned size = 0;
              MMS_SaveToMemory(&message, &data, &size, 0);
              MMS_Free(data);
            }),
            1U);
  EXPECT_LE(taken([&] {
              CMMsg decoded;
              MMS_LoadFromMemory(octets.data(), static_cast<unsigned>(octets.size()), &decoded, 0);
            }),
            16U);
}

TEST(LackOfMemory, SavingLeavesTheOldFile) {
  const TemporaryFolder folder;
  CMMsg message;
  fillComplete(message);
  const std::string path = folder.path("m.mms");
  EXPECT_GT(failEach(
                [&]() -> std::optional<std::string> {
                  if (MMS_Save(&message, path.c_str(), 0) == 0) return std::nullopt;
                  return "saved";
                },
                {.prepare = [&] { folder.put("m.mms", "old"); },
                 .failed = [&] { EXPECT_EQ(files(folder), "m.mms: old\n"); },
                 .made = [&] { return files(folder); }}),
            0U);
  EXPECT_EQ(folder.get("m.mms"), completeOctets());
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
                  return "decoded";
                },
                {.failed =
                     [&] {
                       EXPECT_EQ(message.GetTransactionId(), nullptr);
                       EXPECT_EQ(message.Content()->ChildCount(), 0U);
                     },
                 .made = [&] { return octetsOf(message); }}),
            20U);
}

TEST(LackOfMemory, InspectingAndHeaderBlocks) {
  const std::string octets = completeOctets();
  Inspection seen;
  const auto told = [&] {
    std::string all;
    const auto tell = [&](const auto& item) {
      all += item.name + ": " + item.value + '\n';
      for (const auto& parameter : item.parameters) all += parameter.name + '=' + parameter.value;
    };
    for (const InspectedField& field : seen.fields) tell(field);
    for (const InspectedPart& part : seen.parts) {
      all += part.contentType;
      for (const auto& parameter : part.parameters) all += parameter.name + '=' + parameter.value;
      for (const InspectedHeader& header : part.headers) tell(header);
    }
    return all;
  };
  EXPECT_GT(failEach(
                [&]() -> std::optional<std::string> {
                  try {
                    seen = inspect(octets.data(), octets.size());
                    return "inspected";
                  } catch (const std::bad_alloc&) {
                    return std::nullopt;
                  }
                },
                {.made = told}),
            20U);
  const std::vector<HeaderField> fields = {{"Accept", "text/plain; q=0.5, image/jpeg"},
                                           {"X-Own", "a value that is no short one"},
                                           {"Cache-Control", "private=\"Accept\""}};
  DecodedHeaders back;
  EXPECT_GT(failEach(
                [&]() -> std::optional<std::string> {
                  try {
                    const EncodedHeaders block = encodeHeaderBlock(fields);
                    back = decodeHeaderBlock(block.octets.data(), block.octets.size());
                    return std::to_string(block.octets.size());
                  } catch (const std::bad_alloc&) {
                    return std::nullopt;
                  }
                },
                {.made = [&] { return text(back.fields); }}),
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
    return "read";
  };
  ASSERT_TRUE(read());
  const auto tree = [&] { return dump(smil); };
  const auto stays = [&, before = tree()] { EXPECT_EQ(tree(), before); };
  EXPECT_GT(failEach(read, {.failed = stays, .made = tree}), 20U);
  const TemporaryFolder folder;
  const std::string path = folder.put("s.smil", kSlides);
  std::optional<CSMIL> onto;
  EXPECT_GT(failEach(
                [&]() -> std::optional<std::string> {
                  if (MMS_LoadSmil(path.c_str(), &*onto, 0) == 0) return std::nullopt;
                  return "read";
                },
                {.prepare = [&] { onto.emplace(); },
                 .failed = [&] { EXPECT_EQ(onto->ElementCount(), 0U); },
                 .made = [&] { return dump(*onto); }}),
            20U);
  setParseErrorHandler(nullptr);
}

TEST(LackOfMemory, WritingAndCopyingSmil) {
  CSMIL smil;
  ASSERT_EQ(MMS_LoadSmilFromMemory(kSlides, &smil, 0), 1);
  std::string expected;
  EXPECT_GT(failEach([&]() -> std::optional<std::string> {
              unsigned char* text = nullptr;
              unsigned length = 0;
              if (MMS_SaveSmilToMemory(&smil, &text, &length, 0) == 0) return std::nullopt;
              const std::string_view written(reinterpret_cast<const char*>(text), length);
              if (expected.empty()) expected = written;
              const bool same = written == expected;
              MMS_Free(text);
              return same ? "same" : "other";
            }),
            0U);
  CMMsg message;
  message.SetTransactionId("kept");
  for (unsigned i = 0; i < 2; ++i) {
    dynamic_cast<CSMILMedia&>(*smil.GetBody()->Element(0)->Element(i)).PutContent("octets", 6);
  }
  EXPECT_GT(failEach(
                [&]() -> std::optional<std::string> {
                  if (MMS_SmilToMMS(&smil, &message, 0) == 0) return std::nullopt;
                  return "composed";
                },
                {.made = [&] { return octetsOf(message); }}),
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
          {.prepare = removeAll, .failed = isEmpty, .made = [&] { return files(folder); }}),
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
                {.prepare =
                     [&] {
                       removeAll();
                       taken = message;
                     },
                 .failed = isEmpty,
                 .made = [&] { return dump(presentation) + files(folder); }}),
            20U);
}

}  // namespace
}  // namespace mmsbrix::test
