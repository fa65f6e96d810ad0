#include "convert/new_files.h"

#include "platform/files.h"

namespace mmsbrix {

unsigned NewFiles::write(const std::string& stem, const std::string& extension,
                         std::span<const std::uint8_t> content, std::string& path) {
  unsigned& number = next_.try_emplace(stem + extension, 1).first->second;
  for (;; ++number) {
    std::string candidate = stem;
    if (number > 1) candidate += " #" + std::to_string(number);
    candidate += extension;
    const unsigned error = platform::writeNewFile(candidate.c_str(), content);
    if (error == platform::kErrorFileExists) continue;
    if (error == 0) path = std::move(candidate);
    return error;
  }
}

}  // namespace mmsbrix
