// Seam: what the tool needs of the system beyond the C++ library.  Paths and texts are UTF-8 on
// every platform; host_posix.cpp and host_win32.cpp are the two sides.
#ifndef MMSBRIX_TOOLS_HOST_H
#define MMSBRIX_TOOLS_HOST_H

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mmsbrix::tool::host {

/// Prepares the process, for as long as it lives: octets go through standard input and output as
/// they are, UTF-8 shows on a console as its characters, and a file that grows too large is an
/// error like any other.  To be made before anything is read or printed.
class Process {
 public:
  Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();  // NOLINT(performance-trivially-destructible): there is a charset to give back

 private:
  unsigned consoleCharset_ = 0;  // of before, 0 where there is nothing to give back
};

/// A path of the C++ library from its text, and the text of one; its own conversions depend on the
/// locale.
[[nodiscard]] inline std::filesystem::path pathOf(std::string_view text) {
  return std::u8string(text.begin(), text.end());
}
[[nodiscard]] inline std::string textOf(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

/// The program's arguments with its name in front; `argc` and `argv` are those of `main`.
[[nodiscard]] std::vector<std::string> arguments(int argc, char** argv);
/// A variable of the environment; nothing when it is not set.
[[nodiscard]] std::optional<std::string> environment(const char* name);
/// The user's folder for settings of programs, without separator at its end; "" when the
/// environment names none.
[[nodiscard]] std::string settingsFolder();
/// True when standard error is a terminal on which a line can be written over.
[[nodiscard]] bool standardErrorIsTerminal();
[[nodiscard]] unsigned processId() noexcept;
/// From now on no core of the process is written: there are secrets in its memory.
void keepOutOfCores() noexcept;
/// What may stand between the parts of a path.
extern const char kPathSeparators[];

/// Forgets why an operation on a file failed, so that `fileError` tells of the next one.
void forgetFileError() noexcept;
/// Why the last operation on a file failed, the library's included; "" when that is not known.
[[nodiscard]] std::string fileError();

enum class Readers { everybody, ownerOnly };
enum class NewFile {
  written,
  exists,  ///< something stands under that name, be it a link that leads nowhere
  failed,  ///< nothing is left behind
};
/// Writes a file that did not exist; one for its owner is closed to others before it has an octet.
NewFile writeNewFile(const std::string& path, std::string_view content, Readers readers);
/// Takes from all but the owner what they may do with a file or folder; false when that fails.
bool closeToOthers(const std::string& path);
/// True when others than its owner may read this file.  Pipes and devices have nothing to hide.
[[nodiscard]] bool othersCanRead(const std::string& path);

/// Takes what asks the process to end (SIGINT and SIGTERM; Ctrl-C, Ctrl-Break and the closing of
/// the console) while it lives, on this thread and those that it starts.  One at a time.
class Interruption {
 public:
  Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  /// What came after the wait is taken too, so that it does not end the process.
  ~Interruption();
  /// Returns when the process was asked to end, or `wake` was called.
  void wait() noexcept;
  /// Ends the wait, or the next one, from any thread.
  void wake() noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace mmsbrix::tool::host

#endif  // MMSBRIX_TOOLS_HOST_H
