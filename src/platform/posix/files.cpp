#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "platform/posix/errors.h"

namespace mmsbrix::platform {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int fd) noexcept : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }

  [[nodiscard]] int get() const noexcept { return fd_; }
  [[nodiscard]] bool valid() const noexcept { return fd_ >= 0; }
  /// Closes now, so that a late write error is seen; the error number or 0.
  int close() noexcept { return ::close(std::exchange(fd_, -1)) == 0 ? 0 : errno; }

 private:
  int fd_;
};

int openRetrying(const char* path, int flags, mode_t mode = 0) noexcept {
  int fd = -1;
  do {
    fd = ::open(path, flags | O_CLOEXEC, mode);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

// Reads until `buffer` is full or the file ends; the octets read, -1 with errno on an error.
ssize_t readFully(int fd, std::span<std::uint8_t> buffer) noexcept {
  std::size_t done = 0;
  while (done < buffer.size()) {
    const ssize_t got = ::read(fd, buffer.data() + done, buffer.size() - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return -1;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return static_cast<ssize_t>(done);
}

// 0 or errno.
int writeFully(int fd, std::span<const std::uint8_t> content) noexcept {
  while (!content.empty()) {
    const ssize_t put = ::write(fd, content.data(), content.size());
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return errno;
    content = content.subspan(static_cast<std::size_t>(put));
  }
  return 0;
}

void set(unsigned* error, unsigned value) noexcept {
  if (error != nullptr) *error = value;
}

// Writes into whatever stands under the name now: a device, a pipe, the target of a link.  0 or
// errno.
int writeInPlace(const char* path, std::span<const std::uint8_t> content) noexcept {
  Descriptor file(openRetrying(path, O_WRONLY | O_CREAT | O_TRUNC, 0666));
  if (!file.valid()) return errno;
  const int failure = writeFully(file.get(), content);
  const int closing = file.close();
  return failure != 0 ? failure : closing;
}

// The whole content of a file; nothing when it cannot be read.
std::optional<std::vector<std::uint8_t>> contentOf(const char* path, std::size_t octets) {
  const Descriptor file(openRetrying(path, O_RDONLY));
  if (!file.valid()) return std::nullopt;
  std::vector<std::uint8_t> content(octets);
  const ssize_t got = readFully(file.get(), content);
  if (got < 0 || static_cast<std::size_t>(got) != octets) return std::nullopt;
  return content;
}

// Writes over a regular file whose folder takes no new ones.  The room is made first, so that a
// full disk leaves the old file as it was; after any other failure the old content is put back, if
// it can be read.  0 or errno.
int overwrite(const char* path, const struct stat& existing,
              std::span<const std::uint8_t> content) {
  const auto old = contentOf(path, static_cast<std::size_t>(existing.st_size));
  Descriptor file(openRetrying(path, O_WRONLY));
  if (!file.valid()) return errno;
  const auto octets = static_cast<off_t>(content.size());
  if (octets > existing.st_size) {
    const int failure = ::posix_fallocate(file.get(), 0, octets);
    // A file system that cannot make room beforehand is written to all the same.
    if (failure != 0 && failure != EINVAL && failure != EOPNOTSUPP) {
      return ::ftruncate(file.get(), existing.st_size) == 0 ? failure : errno;
    }
  }
  int failure = writeFully(file.get(), content);
  if (failure == 0 && ::ftruncate(file.get(), octets) != 0) failure = errno;
  if (failure != 0 && old && ::lseek(file.get(), 0, SEEK_SET) == 0 &&
      writeFully(file.get(), *old) == 0 && ::ftruncate(file.get(), existing.st_size) != 0) {
    failure = errno;
  }
  const int closing = file.close();
  return failure != 0 ? failure : closing;
}

// A complete file is written under a name of its own beside the target, then takes the target's
// name. 0 or errno; on failure nothing is left behind.
int writeBesideAndRename(const std::string& target, const struct stat* existing,
                         std::span<const std::uint8_t> content) {
  // The name is short whatever the target's is, which may be as long as names can be.
  const std::string folder = target.substr(0, target.rfind('/') + 1);
  // The time keeps it apart from what killed processes of the same number have left.
  struct timespec now {};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const std::string process = std::to_string(::getpid()) + "-" + std::to_string(now.tv_sec);
  std::string beside;
  int fd = -1;
  for (long attempt = 0; attempt < 100; ++attempt) {
    beside = folder + ".mmsbrix-" + process + "-" + std::to_string(now.tv_nsec + attempt) + ".part";
    fd = openRetrying(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0666);
    if (fd >= 0 || errno != EEXIST) break;
  }
  if (fd < 0) return errno;
  Descriptor file(fd);
  int failure = 0;
  if (existing != nullptr && ::fchmod(fd, existing->st_mode & 07777) != 0) failure = errno;
  if (failure == 0) failure = writeFully(fd, content);
  const int closing = file.close();
  if (failure == 0) failure = closing;
  if (failure == 0 && ::rename(beside.c_str(), target.c_str()) != 0) failure = errno;
  if (failure != 0) ::unlink(beside.c_str());
  return failure;
}

int writeOrErrno(const char* path, std::span<const std::uint8_t> content) {
  struct stat status {};
  const bool exists = ::stat(path, &status) == 0;
  struct stat link {};
  const bool isDanglingLink = !exists && ::lstat(path, &link) == 0;
  if (isDanglingLink || (exists && !S_ISREG(status.st_mode))) return writeInPlace(path, content);
  // A link keeps pointing where it points: the new file goes beside its target.
  std::string target = path;
  if (char resolved[PATH_MAX]; exists && ::realpath(path, resolved) != nullptr) target = resolved;
  if (exists && ::access(target.c_str(), W_OK) != 0) return errno;
  const int failure = writeBesideAndRename(target, exists ? &status : nullptr, content);
  const bool folderTakesNone = failure == EACCES || failure == EPERM || failure == EROFS;
  return exists && folderTakesNone ? overwrite(path, status, content) : failure;
}

}  // namespace

struct InputFile::State {
  Descriptor file;
  std::uint64_t size;
  std::vector<std::uint8_t> drained;  // the content of what has no size of its own
  bool regular;
};

InputFile::InputFile(std::unique_ptr<State> state) noexcept : state_(std::move(state)) {}
InputFile::InputFile(InputFile&&) noexcept = default;
InputFile::~InputFile() = default;

std::optional<InputFile> InputFile::open(const char* path, unsigned* error) {
  Descriptor file(openRetrying(path, O_RDONLY));
  struct stat status {};
  if (!file.valid() || ::fstat(file.get(), &status) != 0) {
    set(error, win32Error(errno));
    return std::nullopt;
  }
  if (S_ISDIR(status.st_mode)) {
    set(error, kErrorAccessDenied);
    return std::nullopt;
  }
  const bool regular = S_ISREG(status.st_mode);
  auto state = std::make_unique<State>(
      State{std::move(file), static_cast<std::uint64_t>(status.st_size), {}, regular});
  if (!regular) {
    std::uint8_t chunk[16384];
    ssize_t got = 0;
    while ((got = readFully(state->file.get(), chunk)) > 0) {
      if (state->drained.size() > kMaxStreamOctets) {
        set(error, kErrorNotEnoughMemory);
        return std::nullopt;
      }
      state->drained.insert(state->drained.end(), chunk, chunk + got);
    }
    if (got < 0) {
      set(error, win32Error(errno));
      return std::nullopt;
    }
    state->size = state->drained.size();
  }
  return InputFile(std::move(state));
}

std::uint64_t InputFile::size() const noexcept {
  return state_->size;
}

bool InputFile::read(std::span<std::uint8_t> buffer, unsigned* error) {
  std::size_t done = 0;
  if (state_->regular) {
    const ssize_t got = ::lseek(state_->file.get(), 0, SEEK_SET) == 0
                            ? readFully(state_->file.get(), buffer)
                            : ssize_t{-1};
    if (got < 0) {
      set(error, win32Error(errno));
    } else {
      done = static_cast<std::size_t>(got);
      set(error, kErrorReadFault);
    }
  } else {
    done = std::min(buffer.size(), state_->drained.size());
    std::copy_n(state_->drained.begin(), done, buffer.begin());
    set(error, kErrorReadFault);
  }
  if (done == buffer.size()) {
    set(error, 0);
    return true;
  }
  std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(done), buffer.end(), std::uint8_t{0});
  return false;
}

unsigned writeWholeFile(const char* path, std::span<const std::uint8_t> content) {
  const int failure = writeOrErrno(path, content);
  errno = failure;
  return win32Error(failure);
}

unsigned writeNewFile(const char* path, std::span<const std::uint8_t> content) {
  Descriptor file(openRetrying(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0666));
  if (!file.valid()) return win32Error(errno);
  int failure = writeFully(file.get(), content);
  const int closing = file.close();
  if (failure == 0) failure = closing;
  if (failure != 0) ::unlink(path);
  return win32Error(failure);
}

void removeFile(const char* path) noexcept {
  ::unlink(path);
}

std::string temporaryFolder() {
  const char* named = std::getenv("TMPDIR");
  std::string folder = named == nullptr || *named == 0 ? "/tmp" : named;
  if (!isPathSeparator(folder.back())) folder += '/';
  return folder;
}

std::string pathFromUrlPath(std::string path) {
  return path;
}

bool isPathSeparator(char c) noexcept {
  return c == '/';
}

}  // namespace mmsbrix::platform
