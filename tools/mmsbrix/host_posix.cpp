#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "host.h"

namespace mmsbrix::tool::host {

const char kPathSeparators[] = "/";

Process::Process() {
  ::signal(SIGXFSZ, SIG_IGN);
}

Process::~Process() = default;

std::vector<std::string> arguments(int argc, char** argv) {
  return {argv, argv + argc};
}

std::optional<std::string> environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::string settingsFolder() {
  std::string folder = environment("XDG_CONFIG_HOME").value_or("");
  if (!folder.empty()) return folder;
  const std::string home = environment("HOME").value_or("");
  return home.empty() ? "" : home + "/.config";
}

bool standardErrorIsTerminal() {
  return ::isatty(STDERR_FILENO) == 1;
}

void keepOutOfCores() noexcept {
  constexpr struct rlimit kNone { 0, 0 };
  ::setrlimit(RLIMIT_CORE, &kNone);
}

unsigned processId() noexcept {
  return static_cast<unsigned>(::getpid());
}

void forgetFileError() noexcept {
  errno = 0;
}

std::string fileError() {
  return errno == 0 ? std::string() : std::strerror(errno);
}

NewFile writeNewFile(const std::string& path, std::string_view content, Readers readers) {
  const mode_t mode = readers == Readers::ownerOnly ? 0600 : 0666;
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (file < 0) return errno == EEXIST ? NewFile::exists : NewFile::failed;
  bool written = true;
  while (written && !content.empty()) {
    const ssize_t put = ::write(file, content.data(), content.size());
    if (put > 0) content.remove_prefix(static_cast<std::size_t>(put));
    written = put >= 0 || errno == EINTR;
  }
  if (::close(file) == 0 && written) return NewFile::written;
  const int reason = errno;
  ::unlink(path.c_str());
  errno = reason;
  return NewFile::failed;
}

bool closeToOthers(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 &&
         ::chmod(path.c_str(), S_ISDIR(status.st_mode) ? 0700 : 0600) == 0;
}

bool othersCanRead(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         (status.st_mode & (S_IRGRP | S_IROTH)) != 0;
}

struct Interruption::State {
  sigset_t before{};
  int signals = -1;  // has SIGINT and SIGTERM in place of their handlers
  int woken = -1;
};

Interruption::Interruption() : state_(std::make_unique<State>()) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &set, &state_->before);
  state_->signals = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
  state_->woken = ::eventfd(0, EFD_CLOEXEC);
}

Interruption::~Interruption() {
  // A signal that is still pending is taken, so that unblocking does not end the process.
  signalfd_siginfo taken{};
  while (::read(state_->signals, &taken, sizeof taken) > 0) continue;
  ::close(state_->signals);
  ::close(state_->woken);
  ::pthread_sigmask(SIG_SETMASK, &state_->before, nullptr);
}

void Interruption::wait() noexcept {
  std::array<pollfd, 2> events = {pollfd{state_->signals, POLLIN, 0},
                                  pollfd{state_->woken, POLLIN, 0}};
  while (::poll(events.data(), events.size(), -1) < 0 && errno == EINTR) continue;
}

void Interruption::wake() noexcept {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t put = ::write(state_->woken, &one, sizeof one);
}

}  // namespace mmsbrix::tool::host
