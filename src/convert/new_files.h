// Files that take the first free name: "name.jpg", "name #2.jpg", "name #3.jpg" and so on.
#ifndef MMSBRIX_CONVERT_NEW_FILES_H
#define MMSBRIX_CONVERT_NEW_FILES_H

#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace mmsbrix {

/// Writes the files of one extraction.  Nothing that exists is overwritten or followed, whoever
/// else writes into the folder meanwhile.
class NewFiles {
 public:
  /// Writes `content` to the first free name made of `stem`, a path, and `extension`.  Returns 0
  /// and sets `path`, or the error number.
  unsigned write(const std::string& stem, const std::string& extension,
                 std::span<const std::uint8_t> content, std::string& path);
  /// Removes all that was written, where an extraction ends without a result.
  void discard() noexcept;

 private:
  // The number to begin with, by the name without one: those below are taken already.
  std::unordered_map<std::string, unsigned> next_;
  std::vector<std::string> written_;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_CONVERT_NEW_FILES_H
