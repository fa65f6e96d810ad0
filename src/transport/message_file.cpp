#include "transport/message_file.h"

#include <new>

#include "platform/files.h"

namespace mmsbrix {

std::optional<std::vector<std::uint8_t>> readMessageFile(const char* path, unsigned& error) {
  auto file = platform::InputFile::open(path, &error);
  if (!file) return std::nullopt;
  std::vector<std::uint8_t> content;
  if (file->size() > content.max_size()) throw std::bad_alloc();
  content.resize(static_cast<std::size_t>(file->size()));
  if (!file->read(content, &error)) return std::nullopt;
  return content;
}

}  // namespace mmsbrix
