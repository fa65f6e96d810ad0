// Seam: what tests need of the system.  host_posix.cpp and host_win32.cpp are the two sides.
#ifndef MMSBRIX_TESTS_SUPPORT_HOST_H
#define MMSBRIX_TESTS_SUPPORT_HOST_H

#include <optional>
#include <string>
#include <system_error>

namespace mmsbrix::test {

/// A variable of the environment while the object lives; without a value it is not set.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const std::optional<std::string>& value);
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  /// Gives back what was there.
  ~EnvironmentVariable();

 private:
  const std::string name_;
  std::optional<std::string> before_;
};

/// What the system says of a file that is not there; its number is the same on both sides.
inline std::string noSuchFile() {
  return std::error_code(2, std::system_category()).message();
}

/// The variable that says where temporary files are.
extern const char* const kTemporaryFolderVariable;

/// Makes a symbolic link, or an empty file where the user may not make links.
void makeLink(const std::string& target, const std::string& path);
/// Lets nobody but its owner use a file or folder.
void closeToOthers(const std::string& path);
/// Lets everybody read a file.
void openToOthers(const std::string& path);
/// True when nobody but its owner may do anything with a file or folder.
[[nodiscard]] bool isClosedToOthers(const std::string& path);

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_HOST_H
