#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

#include "support/host.h"

namespace mmsbrix::test {
namespace {

void set(const std::string& name, const std::optional<std::string>& value) {
  if (value) {
    ::setenv(name.c_str(), value->c_str(), 1);
  } else {
    ::unsetenv(name.c_str());
  }
}

mode_t modeOf(const std::string& path) {
  struct stat status {};
  ::stat(path.c_str(), &status);
  return status.st_mode;
}

}  // namespace

EnvironmentVariable::EnvironmentVariable(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)) {
  if (const char* before = ::getenv(name_.c_str())) before_ = before;
  set(name_, value);
}

EnvironmentVariable::~EnvironmentVariable() {
  set(name_, before_);
}

const char* const kTemporaryFolderVariable = "TMPDIR";

void makeLink(const std::string& target, const std::string& path) {
  if (::symlink(target.c_str(), path.c_str()) != 0) throw std::runtime_error(path);
}

void closeToOthers(const std::string& path) {
  ::chmod(path.c_str(), modeOf(path) & S_IRWXU);
}

void openToOthers(const std::string& path) {
  ::chmod(path.c_str(), modeOf(path) | S_IROTH);
}

bool isClosedToOthers(const std::string& path) {
  const mode_t mode = modeOf(path);
  return (mode & S_IRUSR) != 0 && (mode & (S_IRWXG | S_IRWXO)) == 0;
}

}  // namespace mmsbrix::test
