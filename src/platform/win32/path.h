// Names of files as callers give them.
#ifndef MMSBRIX_PLATFORM_WIN32_PATH_H
#define MMSBRIX_PLATFORM_WIN32_PATH_H

#include <windows.h>

#include <string>

namespace mmsbrix::platform {

/// A name in the process's ANSI code page, or in UTF-8: one that is well-formed UTF-8 and not only
/// ASCII is taken as UTF-8, which no text of people is in another code page.
class Path {
 public:
  explicit Path(std::string text);

  [[nodiscard]] HANDLE open(DWORD access, DWORD sharing, DWORD disposition) const noexcept;
  /// INVALID_FILE_ATTRIBUTES when there is nothing of that name.
  [[nodiscard]] DWORD attributes() const noexcept;
  bool remove() const noexcept;
  /// Gives the file of this name another one, where a file may stand if `replacing`.
  [[nodiscard]] bool renameTo(const Path& target, bool replacing) const noexcept;
  /// Another name in the same folder.
  [[nodiscard]] Path sibling(const std::string& name) const;

 private:
  std::string text_;
  std::wstring wide_;  // empty when the system takes the text as it stands
};

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_WIN32_PATH_H
