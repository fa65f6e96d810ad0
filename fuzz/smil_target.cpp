#include <memory>
#include <string>

#include "mms/mmscodec.h"
#include "smil/parse_error.h"
#include "smil/smilcodec.h"
#include "targets.h"

namespace mmsbrix::fuzz {
namespace {

std::string write(CSMIL& smil) {
  unsigned char* buffer = nullptr;
  unsigned length = 0;
  require(MMS_SaveSmilToMemory(&smil, &buffer, &length, 0) == 1, "a presentation can be written");
  std::string text(reinterpret_cast<const char*>(buffer), length);
  MMS_Free(buffer);
  return text;
}

}  // namespace

void smil(Input input) {
  static int reported = 0;
  static const bool handled = [] {
    setParseErrorHandler([](const std::string&, const std::string& reason) {
      require(!reason.empty(), "an error has a reason");
      ++reported;
    });
    return true;
  }();
  (void)handled;
  const std::string text(input.begin(), input.end());
  CSMIL first;
  const int before = reported;
  if (MMS_LoadSmilFromMemory(text.c_str(), &first, 0) == 0) {
    require(reported - before <= 1, "an error is told once");
    return;
  }
  require(reported == before, "no error is told of what is read");
  const std::string written = write(first);
  CSMIL second;
  require(MMS_LoadSmilFromMemory(written.c_str(), &second, 0) == 1, "what is written can be read");
  require(write(second) == written, "what is written reads back equal");
  const CSMIL copy(second);
}

}  // namespace mmsbrix::fuzz
