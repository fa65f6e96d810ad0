// Many threads, each with objects of its own, and what is made once in a process raced for on
// purpose.  ThreadSanitizer looks on in the preset `thread`; the results are looked at in every
// one.
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "convert/extraction.h"
#include "convert/mmsconvert.h"
#include "mms/inspector.h"
#include "platform/media_types.h"
#include "smil/parse_error.h"
#include "smil/smilcodec.h"
#include "support/messages.h"
#include "support/mms_http.h"
#include "support/parse_errors.h"
#include "support/raw_server.h"
#include "support/temporary_folder.h"
#include "transport/mmshttp.h"
#include "transport/trace_log.h"
#include "wsp/diagnostics.h"
#include "wsp/header_block.h"

namespace mmsbrix::test {
namespace {

constexpr unsigned kThreads = 8;

// Runs `work` on all threads, which begin at the same moment.
template <class Work>
void race(Work work) {
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// First in this program, so that nothing has been initialised yet.
TEST(Threads, RaceForWhatIsMadeOnce) {
  const TemporaryFolder folder;
  RawServer server(RawReply{{httpAnswer(kSendConfOk)}});
  CMMsg message;
  fillComplete(message);
  const std::vector<std::uint8_t> octets = encode(message);
  const std::string file = folder.put("m.mms", std::string(octets.begin(), octets.end()));
  std::atomic<int> accepted{0};
  race([&](unsigned i) {
    // Each thread begins with something else.
    for (unsigned step = 0; step < 4; ++step) {
      switch ((i + step) % 4) {
        case 0: {
          CMMSHttp http;
          http.ConnectGtw(nullptr, 0, 0);
          if (http.SendMMS(server.url().c_str(), file.c_str(), 0)) ++accepted;
          http.DisconnectGtw();
          break;
        }
        case 1: {
          CSMIL smil;
          EXPECT_EQ(MMS_LoadSmilFromMemory("<smil a='&amp;'/>", &smil, 0), 1);
          break;
        }
        case 2:
          EXPECT_NE(platform::extensionOfMediaType("text/x-csrc"), "?");
          break;
        default: {
          const auto block = encodeHeaderBlock({{"Accept-Language", "fi, en"}, {"Date", "x"}});
          EXPECT_GT(block.octets.size(), 0U);
          EXPECT_FALSE(inspect(octets.data(), octets.size()).fields.empty());
          break;
        }
      }
    }
  });
  EXPECT_EQ(accepted, static_cast<int>(kThreads));
}

TEST(Threads, EachWithItsOwnObjectsWhileSinksAreReplaced) {
  const TemporaryFolder folder;
  RawServer server(RawReply{{httpAnswer(kSendConfOk)}});
  CMMsg original;
  fillComplete(original);
  const std::vector<std::uint8_t> expected = encode(original);
  std::atomic<bool> over{false};
  std::atomic<std::size_t> lines{0};
  std::thread host([&] {
    while (!over) {
      setTraceSink([&lines](std::string_view line) { lines += line.size(); });
      setDiagnosticsSink([&lines](const Diagnostic& report) { lines += report.text.size(); });
      setParseErrorHandler([&lines](const std::string&, const std::string&) { ++lines; });
      std::this_thread::yield();
      setTraceSink({});
      setDiagnosticsSink({});
      passOverParseErrors();
    }
  });
  race([&](unsigned i) {
    const TemporaryFolder own;
    const std::string file = own.path("m.mms");
    for (int round = 0; round < 20; ++round) {
      CMMsg message;
      fillComplete(message);
      EXPECT_EQ(encode(message), expected);
      EXPECT_NE(MMS_Save(&message, file.c_str(), 0), 0U);
      CMMsg back;
      EXPECT_EQ(MMS_Load(file.c_str(), &back, 0), 1);
      EXPECT_EQ(back.Content()->ChildCount(), 3U);
      for (const ExtractedPart& part : extractParts(back, own.path())) EXPECT_EQ(part.error, 0U);
      // One folder for all of them.
      for (const ExtractedPart& part : extractParts(back, folder.path())) EXPECT_EQ(part.error, 0U);
      CSMIL smil;
      EXPECT_EQ(MMS_LoadSmilFromMemory("<smil><body><par/></body></smil>", &smil, 0), 1);
      EXPECT_EQ(MMS_LoadSmilFromMemory("<smil><body>", &smil, 0), 0);
      unsigned char* text = nullptr;
      EXPECT_EQ(MMS_SaveSmilToMemory(&smil, &text, nullptr, 0), 1);
      MMS_Free(text);
      EXPECT_EQ(decodeHeaderBlock(expected.data(), expected.size()).fields.empty(), false);
      if (round % 5 == static_cast<int>(i % 5)) {
        CMMSHttp http;
        http.ConnectGtw(nullptr, 0, 0);
        EXPECT_TRUE(http.SendMMS(server.url().c_str(), file.c_str(), 0));
        http.DisconnectGtw();
      }
    }
  });
  over = true;
  host.join();
  EXPECT_EQ(folder.entries(), static_cast<std::ptrdiff_t>(kThreads * 20 * 3));
}

}  // namespace
}  // namespace mmsbrix::test
