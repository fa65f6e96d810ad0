// Every step of writing a file fails once in turn: the documented result comes back, the old file
// is still there as it was, and nothing is left beside it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <functional>
#include <string>

#include "convert/extraction.h"
#include "convert/mmsconvert.h"
#include "platform/files.h"
#include "smil/smilcodec.h"
#include "support/messages.h"
#include "support/parse_errors.h"
#include "support/temporary_folder.h"
#include "transport/operators.h"

namespace {

// Steps so far, and the one that fails.
struct Fault {
  bool armed = false;
  bool folderIsShut = false;  // it takes no new file: the first step is refused too
  int error = 0;
  std::size_t failing = 0;
  std::size_t steps = 0;
};
Fault fault;
// What reads of files give: an error, or an end that comes early.
enum class Reading { whole, failing, cutShort };
Reading reading = Reading::whole;

// True when this step is to fail; errno says why.
bool fails() noexcept {
  if (!fault.armed) return false;
  const std::size_t step = fault.steps++;
  errno = step == fault.failing ? fault.error : EACCES;
  return step == fault.failing || (step == 0 && fault.folderIsShut);
}

}  // namespace

// The linker's --wrap sends the library's calls here.
extern "C" {
int __real_open(const char* path, int flags, ...);
ssize_t __real_write(int file, const void* octets, size_t count);
ssize_t __real_read(int file, void* octets, size_t count);
int __real_close(int file);
int __real_fchmod(int file, mode_t mode);
int __real_rename(const char* from, const char* to);
int __real_posix_fallocate(int file, off_t offset, off_t length);

int __wrap_open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return (flags & O_WRONLY) != 0 && fails() ? -1 : __real_open(path, flags, mode);
}

ssize_t __wrap_write(int file, const void* octets, size_t count) {
  if (fails()) return -1;
  // A disk that is nearly full takes a part first.
  if (fault.armed && count > 1) count = count / 2;
  return __real_write(file, octets, count);
}

ssize_t __wrap_read(int file, void* octets, size_t count) {
  if (reading == Reading::whole) return __real_read(file, octets, count);
  errno = EIO;
  return reading == Reading::failing ? -1 : 0;
}

int __wrap_close(int file) {
  const int error = errno;
  const int result = __real_close(file);
  if (fault.armed && fails()) return -1;
  errno = error;
  return result;
}

int __wrap_fchmod(int file, mode_t mode) {
  return fails() ? -1 : __real_fchmod(file, mode);
}

int __wrap_rename(const char* from, const char* to) {
  return fails() ? -1 : __real_rename(from, to);
}

int __wrap_posix_fallocate(int file, off_t offset, off_t length) {
  return fails() ? fault.error : __real_posix_fallocate(file, offset, length);
}
}

namespace mmsbrix::test {
namespace {

/// One thing that writes; true when it says that it has.
struct Writing {
  const char* name;
  std::function<bool(const std::string& path)> run;
};

constexpr char kOld[] = "what the user had";

// Runs `run` with each step failing, until it gets through without reaching the failing one.
template <class Run, class Check>
std::size_t failEach(int error, Run run, Check check) {
  for (std::size_t failing = 0;; ++failing) {
    fault = {.armed = true, .folderIsShut = false, .error = error, .failing = failing, .steps = 0};
    const bool done = run();
    fault.armed = false;
    const bool reached = fault.steps > failing;
    check(done, reached);
    if (!reached || testing::Test::HasFailure()) return failing;
  }
}

std::vector<Writing> writings() {
  static CMMsg message;
  static CSMIL smil;
  fillComplete(message);
  MMS_LoadSmilFromMemory("<smil><body><par/></body></smil>", &smil, 0);
  return {
      {"a message",
       [](const std::string& path) { return MMS_Save(&message, path.c_str(), 0) != 0; }},
      {"a presentation",
       [](const std::string& path) { return MMS_SaveSmil(&smil, path.c_str(), 0) != 0; }},
      {"a part",
       [](const std::string& path) { return message.Content()->FirstChild()->Save(path.c_str()); }},
  };
}

TEST(FileFaults, TheOldFileStaysAndNothingIsLeftBeside) {
  for (const Writing& writing : writings()) {
    for (const int error : {ENOSPC, EIO, EDQUOT}) {
      const TemporaryFolder folder;
      std::string path = folder.put("kept", kOld);
      SCOPED_TRACE(std::string(writing.name) + ", errno " + std::to_string(error));
      const std::size_t failures = failEach(
          error, [&] { return writing.run(path); },
          [&](bool done, bool reached) {
            EXPECT_EQ(done, !reached);
            EXPECT_EQ(folder.get("kept") == kOld, reached);
            EXPECT_EQ(folder.entries(), 1);
          });
      EXPECT_GE(failures, 4U) << "open, write, close and rename can fail";
      path = folder.path("new");
      failEach(
          error, [&] { return writing.run(path); },
          [&](bool done, bool reached) {
            EXPECT_EQ(done, !reached);
            EXPECT_EQ(folder.entries(), reached ? 1 : 2);
          });
    }
  }
}

// A folder that takes no new file still lets an old one be replaced, in place.
TEST(FileFaults, AFileReplacedInPlaceStaysWhenTheDiskIsFull) {
  const TemporaryFolder folder;
  const std::string path = folder.put("kept", kOld);
  const auto replace = [&path](const std::string& content, std::size_t failing) {
    const auto* octets = reinterpret_cast<const std::uint8_t*>(content.data());
    fault = {.armed = true, .folderIsShut = true, .error = ENOSPC, .failing = failing, .steps = 0};
    const unsigned error = platform::writeWholeFile(path.c_str(), {octets, content.size()});
    fault.armed = false;
    return error;
  };
  const std::string longer(10000, 'x');
  // Behind the file beside, which the folder refuses, and the end of reading the old one: opening,
  // making room, writing the first pieces.
  for (const std::size_t step : {2, 3, 4, 5, 6}) {
    EXPECT_EQ(replace(longer, step), platform::kErrorDiskFull);
    EXPECT_TRUE(folder.get("kept") == kOld) << step;
  }
  for (const std::string& content : {longer, std::string("short"), std::string()}) {
    EXPECT_EQ(replace(content, SIZE_MAX), 0U);
    EXPECT_EQ(folder.get("kept"), content);
  }
}

TEST(FileFaults, WhatCannotBeReadToItsEndIsSaid) {
  const TemporaryFolder folder;
  const std::string path = folder.put("f", "<smil/>");
  const std::string pipe = folder.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const int writer = ::open(pipe.c_str(), O_RDWR);
  for (const Reading how : {Reading::failing, Reading::cutShort}) {
    reading = how;
    CMMPart part;
    EXPECT_FALSE(part.Load(path.c_str()));
    EXPECT_EQ(part.GetContentLen(), 7);
    EXPECT_EQ(part.GetContent()[0], 0);
    EXPECT_EQ(part.Load(pipe.c_str()), how == Reading::cutShort) << "the end of a pipe is its end";
    CMMsg message;
    EXPECT_EQ(MMS_Load(path.c_str(), &message, 0), 0);
    ParseErrors errors;
    CSMIL smil;
    EXPECT_EQ(MMS_LoadSmil(path.c_str(), &smil, 0), 0);
    EXPECT_NE(errors.take().find("The file cannot be read"), std::string::npos);
    std::string error;
    EXPECT_FALSE(loadOperators(path, error));
    EXPECT_EQ(error, path + ": cannot be read");
    reading = Reading::whole;
  }
  ::close(writer);
}

TEST(FileFaults, ExtractionNamesWhatCouldNotBeWritten) {
  CMMsg message;
  fillComplete(message);
  const TemporaryFolder folder;
  std::vector<ExtractedPart> parts;
  const std::size_t failures = failEach(
      ENOSPC,
      [&] {
        parts = extractParts(message, folder.path());
        return true;
      },
      [&](bool, bool reached) {
        std::ptrdiff_t written = 0;
        for (const ExtractedPart& part : parts) {
          EXPECT_EQ(part.error == 0, !part.path.empty());
          EXPECT_TRUE(part.error == 0 || part.error == platform::kErrorDiskFull);
          written += part.path.empty() ? 0 : 1;
        }
        EXPECT_EQ(written, reached ? 2 : 3);
        EXPECT_EQ(folder.entries(), written) << "half a file is left";
        for (const ExtractedPart& part : parts) std::filesystem::remove(part.path);
      });
  EXPECT_GE(failures, 9U);
}

}  // namespace
}  // namespace mmsbrix::test
