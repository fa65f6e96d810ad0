#include "mms/mmscodec.h"

#include <cstdlib>
#include <limits>
#include <memory>

#include "mms/decoder.h"
#include "mms/encoder.h"
#include "platform/files.h"
#include "platform/lack_of_memory.h"
#include "platform/text.h"

using mmsbrix::orEmpty;
using mmsbrix::orWithoutMemory;

int MMS_SaveToMemory(CMMsg* msg, void** data, unsigned int* size, unsigned long /*flags*/) {
  *data = nullptr;
  *size = 0;
  return orWithoutMemory(0, [&] {
    mmsbrix::Writer out;
    const bool complete = mmsbrix::encodeMessage(out, *msg);
    if (out.failed()) return 0;
    *size = static_cast<unsigned int>(out.size());
    *data = out.size() == 0 ? nullptr : out.release();
    return complete ? 1 : 0;
  });
}

unsigned int MMS_Save(CMMsg* msg, const char* path, unsigned long flags) {
  void* data = nullptr;
  unsigned int size = 0;
  const int complete = MMS_SaveToMemory(msg, &data, &size, flags);
  const std::unique_ptr<void, void (*)(void*)> buffer(data, &MMS_Free);
  if (complete == 0) return 0;
  const std::span<const std::uint8_t> content(static_cast<const std::uint8_t*>(data), size);
  return orWithoutMemory(0U, [&] {
    return mmsbrix::platform::writeWholeFile(orEmpty(path), content) == 0 ? size : 0;
  });
}

int MMS_LoadFromMemory(const void* data, unsigned int size, CMMsg* msg, unsigned long /*flags*/) {
  const mmsbrix::Octets pdu(static_cast<const std::uint8_t*>(data), data == nullptr ? 0 : size);
  const int result = orWithoutMemory(0, [&] {
    mmsbrix::decodeMessage(pdu, *msg);
    return 1;
  });
  if (result == 0) msg->Clear();
  return result;
}

int MMS_Load(const char* path, CMMsg* msg, unsigned long /*flags*/) {
  bool cleared = false;
  const int result = orWithoutMemory(0, [&] {
    auto file = mmsbrix::platform::InputFile::open(orEmpty(path));
    if (!file || file->size() > std::numeric_limits<unsigned int>::max()) return 0;
    const auto size = static_cast<std::size_t>(file->size());
    const auto block = mmsbrix::ContentBlock::create(size);
    if (block == nullptr || !file->read({block->octets(), size})) return 0;
    cleared = true;
    mmsbrix::decodeMessage(*block, size, *msg);
    return 1;
  });
  if (result == 0 && cleared) msg->Clear();
  return result;
}

void MMS_Free(void* data) {
  std::free(data);
}
