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
    // All memory is there before the file is, so that none is forgotten.
    std::string& record = written_.emplace_back(candidate);
    const unsigned error = platform::writeNewFile(record.c_str(), content);
    if (error != 0) written_.pop_back();
    if (error == platform::kErrorFileExists) continue;
    if (error == 0) path = std::move(candidate);
    return error;
  }
}

void NewFiles::discard() noexcept {
  for (const std::string& path : written_) platform::removeFile(path.c_str());
  written_.clear();
}

}  // namespace mmsbrix
