#include "smil/smilcodec.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/files.h"
#include "smil/writer.h"

int MMS_SaveSmil(CSMIL* smil, const char* path, unsigned long) {
  if (smil == nullptr || path == nullptr) return 0;
  const std::string text = mmsbrix::smilText(*smil);
  const auto* octets = reinterpret_cast<const std::uint8_t*>(text.data());
  return mmsbrix::platform::writeWholeFile(path, {octets, text.size()}) == 0 ? 1 : 0;
}

int MMS_SaveSmilToMemory(CSMIL* smil, unsigned char** buffer, unsigned int* length, unsigned long) {
  if (smil == nullptr) return 0;
  const std::string text = mmsbrix::smilText(*smil);
  if (length != nullptr) *length = static_cast<unsigned int>(text.size());
  if (buffer == nullptr) return 0;
  // One octet at least, so that null means nothing but a lack of memory.
  *buffer = static_cast<unsigned char*>(std::malloc(text.size() + 1));
  if (*buffer == nullptr) return 0;
  std::memcpy(*buffer, text.data(), text.size());
  return 1;
}
