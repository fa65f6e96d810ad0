// Seam: files, read whole and written whole.  Errors are Win32 error numbers on every platform,
// since callers know them (2 file not found, 3 path not found, 5 access denied ...).
//
// Paths are UTF-8.  On Windows they may be in the process's ANSI code page as well: only what is
// well-formed UTF-8 and has more than ASCII is taken as UTF-8 there.
#ifndef MMSBRIX_PLATFORM_FILES_H
#define MMSBRIX_PLATFORM_FILES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace mmsbrix::platform {

inline constexpr unsigned kErrorFileNotFound = 2;
inline constexpr unsigned kErrorPathNotFound = 3;
inline constexpr unsigned kErrorTooManyOpenFiles = 4;
inline constexpr unsigned kErrorAccessDenied = 5;
inline constexpr unsigned kErrorNotEnoughMemory = 8;
inline constexpr unsigned kErrorWriteFault = 29;
inline constexpr unsigned kErrorReadFault = 30;
inline constexpr unsigned kErrorFileExists = 80;
inline constexpr unsigned kErrorDiskFull = 112;
inline constexpr unsigned kErrorInvalidName = 123;

/// Most octets that are read from what has no size of its own, so that an endless device ends.
inline constexpr std::size_t kMaxStreamOctets = std::size_t{1} << 30;

/// An existing file, opened for reading and shared with other readers.  What has no size of its own
/// (a pipe, a device) is read to its end on opening.
class InputFile {
 public:
  /// Opens `path` (UTF-8).  On failure nothing is returned and `*error`, if given, says why; a
  /// directory is no file.
  static std::optional<InputFile> open(const char* path, unsigned* error = nullptr);
  InputFile(InputFile&&) noexcept;
  ~InputFile();

  [[nodiscard]] std::uint64_t size() const noexcept;
  /// Fills `buffer` from the beginning of the file; false when fewer octets can be read, and
  /// `*error`, if given, says why.  Octets that could not be read are zero.
  bool read(std::span<std::uint8_t> buffer, unsigned* error = nullptr);

 private:
  struct State;
  explicit InputFile(std::unique_ptr<State> state) noexcept;
  std::unique_ptr<State> state_;
};

/// Writes `content` to `path` (UTF-8), replacing an existing file.  A regular file appears under
/// its name only when it is complete, so a failure keeps the old one; permissions of an existing
/// file stay, a link is followed.  Returns 0 or the error number; POSIX systems have it in errno
/// too.
unsigned writeWholeFile(const char* path, std::span<const std::uint8_t> content);

/// Writes `content` to a new file: what stands under the name `path` (UTF-8), be it a link that
/// leads nowhere, is neither overwritten nor followed, and of several attempts at once only one
/// succeeds. Returns 0, `kErrorFileExists`, or another error number, in which case nothing is left
/// behind.
unsigned writeNewFile(const char* path, std::span<const std::uint8_t> content);

/// Removes a file; one that is not there is no error worth telling.
void removeFile(const char* path) noexcept;

/// The system's folder for temporary files, with a separator at its end.
std::string temporaryFolder();
/// What a path of the platform may separate its parts with.
[[nodiscard]] bool isPathSeparator(char c) noexcept;
/// The path of this platform that the path in a file URL stands for, once it is decoded: where
/// there are drives, "/C:/a.jpg" is "C:/a.jpg" (RFC 8089, appendix E.2).
[[nodiscard]] std::string pathFromUrlPath(std::string path);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_FILES_H
