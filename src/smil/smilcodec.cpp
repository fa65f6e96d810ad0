#include "smil/smilcodec.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/files.h"
#include "platform/lack_of_memory.h"
#include "smil/document_text.h"
#include "smil/reader.h"
#include "smil/report_parse_error.h"
#include "smil/tree_moves.h"
#include "smil/writer.h"

using mmsbrix::orWithoutMemory;

namespace {

enum class Onto { presentHolding, emptied };

int loadText(std::string_view utf8, CSMIL& smil, Onto onto) {
  CSMIL read;
  bool isSmil = false;
  if (const auto error = mmsbrix::readSmil(utf8, read, isSmil)) {
    if (error->isOfDocument) mmsbrix::reportParseError(*error);
    return 0;
  }
  if (!isSmil) return 0;
  if (onto == Onto::emptied) {
    mmsbrix::TreeMoves::exchangeContents(smil, read);  // what is replaced goes with `read`
  } else {
    mmsbrix::TreeMoves::append(smil, read);
  }
  return 1;
}

int refuse(const std::string& reason) {
  mmsbrix::reportParseError({0, 0, reason});
  return 0;
}

}  // namespace

int MMS_LoadSmil(const char* path, CSMIL* smil, unsigned long) {
  if (smil == nullptr || path == nullptr) return 0;
  return orWithoutMemory(0, [&] {
    auto file = mmsbrix::platform::InputFile::open(path);
    if (!file) return refuse("The file cannot be opened");
    if (file->size() > mmsbrix::platform::kMaxXmlOctets) return refuse("The document is too large");
    std::string octets(static_cast<std::size_t>(file->size()), '\0');
    if (!file->read({reinterpret_cast<std::uint8_t*>(octets.data()), octets.size()})) {
      return refuse("The file cannot be read");
    }
    std::string reason;
    const auto text = mmsbrix::textOfFile(octets, reason);
    return text ? loadText(*text, *smil, Onto::presentHolding) : refuse(reason);
  });
}

int MMS_LoadSmilFromMemory(const char* text, CSMIL* smil, unsigned long) {
  if (smil == nullptr || text == nullptr) return 0;
  return orWithoutMemory(0, [&] {
    const std::string_view octets = text;
    if (octets.size() > mmsbrix::platform::kMaxXmlOctets)
      return refuse("The document is too large");
    return loadText(mmsbrix::textOfMemory(octets), *smil, Onto::emptied);
  });
}

int MMS_SaveSmil(CSMIL* smil, const char* path, unsigned long) {
  if (smil == nullptr || path == nullptr) return 0;
  return orWithoutMemory(0, [&] {
    const std::string text = mmsbrix::smilText(*smil);
    const auto* octets = reinterpret_cast<const std::uint8_t*>(text.data());
    return mmsbrix::platform::writeWholeFile(path, {octets, text.size()}) == 0 ? 1 : 0;
  });
}

int MMS_SaveSmilToMemory(CSMIL* smil, unsigned char** buffer, unsigned int* length, unsigned long) {
  if (smil == nullptr) return 0;
  return orWithoutMemory(0, [&] {
    const std::string text = mmsbrix::smilText(*smil);
    if (length != nullptr) *length = static_cast<unsigned int>(text.size());
    if (buffer == nullptr) return 0;
    // One octet at least, so that null means nothing but a lack of memory.
    *buffer = static_cast<unsigned char*>(std::malloc(text.size() + 1));
    if (*buffer == nullptr) return 0;
    std::memcpy(*buffer, text.data(), text.size());
    return 1;
  });
}
