// A folder of a test's own, removed with all that is in it.
#ifndef MMSBRIX_TESTS_SUPPORT_TEMPORARY_FOLDER_H
#define MMSBRIX_TESTS_SUPPORT_TEMPORARY_FOLDER_H

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include "support/host.h"

namespace mmsbrix::test {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() /
            ("mmsbrix-test-" + std::to_string(random()) + std::to_string(random()));
    std::filesystem::create_directories(path_);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] std::string path(std::string_view name = "") const {
    return (path_ / name).string();
  }
  /// Writes a file and returns its path.
  std::string put(std::string_view name, std::string_view content) const {
    std::ofstream(path_ / name, std::ios::binary) << content;
    return path(name);
  }
  /// The same, for nobody but its owner to read.
  std::string putPrivate(std::string_view name, std::string_view content) const {
    const std::string written = put(name, content);
    closeToOthers(written);
    return written;
  }
  [[nodiscard]] std::string get(std::string_view name) const {
    std::ifstream in(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  /// How many entries there are, so that litter shows.
  [[nodiscard]] std::ptrdiff_t entries() const {
    return std::distance(std::filesystem::directory_iterator(path_), {});
  }

 private:
  std::filesystem::path path_;
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_TEMPORARY_FOLDER_H
