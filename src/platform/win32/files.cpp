#include "platform/files.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "platform/ascii.h"
#include "platform/win32/path.h"

namespace mmsbrix::platform {
namespace {

class File {
 public:
  explicit File(HANDLE handle) noexcept : handle_(handle) {}
  File(File&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
  File& operator=(File&&) = delete;
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() {
    if (valid()) ::CloseHandle(handle_);
  }

  [[nodiscard]] HANDLE get() const noexcept { return handle_; }
  [[nodiscard]] bool valid() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
  [[nodiscard]] bool hasSize() const noexcept { return ::GetFileType(handle_) == FILE_TYPE_DISK; }
  /// Closes now, so that a late write error is seen; the error number or 0.
  unsigned close() noexcept {
    return ::CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE)) != 0 ? 0 : ::GetLastError();
  }

 private:
  HANDLE handle_;
};

void set(unsigned* error, unsigned value) noexcept {
  if (error != nullptr) *error = value;
}

// Octets of one call of the system.
DWORD step(std::size_t octets) noexcept {
  return static_cast<DWORD>(std::min(octets, std::size_t{1} << 30));
}

// Reads until `buffer` is full or the file ends; the octets read, nothing on an error.
std::optional<std::size_t> readFully(HANDLE file, std::span<std::uint8_t> buffer) noexcept {
  std::size_t done = 0;
  while (done < buffer.size()) {
    DWORD got = 0;
    if (::ReadFile(file, buffer.data() + done, step(buffer.size() - done), &got, nullptr) == 0) {
      if (::GetLastError() == ERROR_BROKEN_PIPE) break;  // the end of a pipe
      return std::nullopt;
    }
    if (got == 0) break;
    done += got;
  }
  return done;
}

// 0 or the error number.
unsigned writeFully(HANDLE file, std::span<const std::uint8_t> content) noexcept {
  while (!content.empty()) {
    DWORD put = 0;
    if (::WriteFile(file, content.data(), step(content.size()), &put, nullptr) == 0) {
      return ::GetLastError();
    }
    if (put == 0) return kErrorWriteFault;
    content = content.subspan(put);
  }
  return 0;
}

unsigned moveEndTo(HANDLE file, std::uint64_t octets) noexcept {
  LARGE_INTEGER end{};
  end.QuadPart = static_cast<LONGLONG>(octets);
  if (::SetFilePointerEx(file, end, nullptr, FILE_BEGIN) == 0 || ::SetEndOfFile(file) == 0) {
    return ::GetLastError();
  }
  const LARGE_INTEGER begin{};
  return ::SetFilePointerEx(file, begin, nullptr, FILE_BEGIN) != 0 ? 0 : ::GetLastError();
}

// Writes over what stands under the name: a device, the target of a link, a file that others have
// open or whose folder takes no new ones.  The room in a file is made first, so that a full disk
// leaves the old one as it was.
unsigned overwrite(const Path& path, std::span<const std::uint8_t> content) noexcept {
  File file(path.open(GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING));
  if (!file.valid()) return ::GetLastError();
  LARGE_INTEGER size{};
  const bool sized = file.hasSize() && ::GetFileSizeEx(file.get(), &size) != 0;
  const auto before = static_cast<std::uint64_t>(size.QuadPart);
  if (sized && content.size() > before) {
    if (const unsigned failure = moveEndTo(file.get(), content.size()); failure != 0) {
      moveEndTo(file.get(), before);
      return failure;
    }
  }
  unsigned failure = writeFully(file.get(), content);
  if (failure == 0 && sized && content.size() < before) {
    failure = moveEndTo(file.get(), content.size());
  }
  const unsigned closing = file.close();
  return failure != 0 ? failure : closing;
}

// A complete file is written under a name of its own beside the target, then takes the target's
// name.  On failure nothing is left behind.
unsigned writeBesideAndRename(const Path& target, bool exists,
                              std::span<const std::uint8_t> content) {
  // The name is short whatever the target's is, which may be as long as names can be.
  const std::string stem = ".mmsbrix-" + std::to_string(::GetCurrentProcessId()) + "-";
  for (unsigned attempt = 0;; ++attempt) {
    const Path beside = target.sibling(stem + std::to_string(attempt) + ".part");
    File file(beside.open(GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW));
    if (!file.valid()) {
      const unsigned failure = ::GetLastError();
      if (failure == ERROR_FILE_EXISTS && attempt < 100) continue;
      return failure;
    }
    unsigned failure = writeFully(file.get(), content);
    const unsigned closing = file.close();
    if (failure == 0) failure = closing;
    if (failure == 0 && !beside.renameTo(target, exists)) failure = ::GetLastError();
    if (failure != 0) beside.remove();
    return failure;
  }
}

// What others have open for reading can be written to, if they share it, but not replaced.
bool meansInUse(unsigned failure) noexcept {
  return failure == ERROR_ACCESS_DENIED || failure == ERROR_SHARING_VIOLATION ||
         failure == ERROR_WRITE_PROTECT || failure == ERROR_UNABLE_TO_REMOVE_REPLACED;
}

// A device or pipe, which is written to as it stands.
bool hasNoSize(const Path& path) noexcept {
  const File file(path.open(0, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING));
  return file.valid() && !file.hasSize();
}

}  // namespace

struct InputFile::State {
  File file;
  std::uint64_t size;
  std::vector<std::uint8_t> drained;  // the content of what has no size of its own
  bool sized;
};

InputFile::InputFile(std::unique_ptr<State> state) noexcept : state_(std::move(state)) {}
InputFile::InputFile(InputFile&&) noexcept = default;
InputFile::~InputFile() = default;

std::optional<InputFile> InputFile::open(const char* path, unsigned* error) {
  File file(Path(path).open(GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING));
  if (!file.valid()) {
    set(error, ::GetLastError());
    return std::nullopt;
  }
  const bool sized = file.hasSize();
  LARGE_INTEGER size{};
  if (sized && ::GetFileSizeEx(file.get(), &size) == 0) {
    set(error, ::GetLastError());
    return std::nullopt;
  }
  auto state = std::make_unique<State>(
      State{std::move(file), static_cast<std::uint64_t>(size.QuadPart), {}, sized});
  if (!sized) {
    std::uint8_t chunk[16384];
    for (;;) {
      const auto got = readFully(state->file.get(), chunk);
      if (!got || state->drained.size() > kMaxStreamOctets) {
        set(error, got ? kErrorNotEnoughMemory : ::GetLastError());
        return std::nullopt;
      }
      if (*got == 0) break;
      state->drained.insert(state->drained.end(), chunk, chunk + *got);
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
  set(error, kErrorReadFault);
  if (state_->sized) {
    const LARGE_INTEGER begin{};
    std::optional<std::size_t> got;
    if (::SetFilePointerEx(state_->file.get(), begin, nullptr, FILE_BEGIN) != 0) {
      got = readFully(state_->file.get(), buffer);
    }
    if (!got) set(error, ::GetLastError());
    done = got.value_or(0);
  } else {
    done = std::min(buffer.size(), state_->drained.size());
    std::copy_n(state_->drained.begin(), done, buffer.begin());
  }
  if (done == buffer.size()) {
    set(error, 0);
    return true;
  }
  std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(done), buffer.end(), std::uint8_t{0});
  return false;
}

unsigned writeWholeFile(const char* path, std::span<const std::uint8_t> content) {
  const Path target{std::string(path)};
  const DWORD attributes = target.attributes();
  const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
  if (exists && (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) != 0) {
    return kErrorAccessDenied;
  }
  if (exists) {
    // As if it were written to: what a reader does not share stays as it is.
    const File probe(target.open(GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING));
    if (!probe.valid()) return ::GetLastError();
  }
  const bool isLink = exists && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  if (isLink || hasNoSize(target)) return overwrite(target, content);
  const unsigned failure = writeBesideAndRename(target, exists, content);
  return exists && meansInUse(failure) ? overwrite(target, content) : failure;
}

unsigned writeNewFile(const char* path, std::span<const std::uint8_t> content) {
  const Path target{std::string(path)};
  File file(target.open(GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW));
  if (!file.valid()) {
    const unsigned failure = ::GetLastError();
    return failure == ERROR_ALREADY_EXISTS ? kErrorFileExists : failure;
  }
  unsigned failure = writeFully(file.get(), content);
  const unsigned closing = file.close();
  if (failure == 0) failure = closing;
  if (failure != 0) target.remove();
  return failure;
}

void removeFile(const char* path) noexcept {
  try {
    Path{std::string(path)}.remove();
  } catch (...) {  // NOLINT(bugprone-empty-catch): no memory for the name; the file stays
  }
}

std::string temporaryFolder() {
  char folder[MAX_PATH + 1] = {};
  const DWORD length = ::GetTempPathA(sizeof folder, folder);
  return length > 0 && length < sizeof folder ? std::string(folder, length) : std::string(".\\");
}

std::string pathFromUrlPath(std::string path) {
  const bool hasDrive = path.size() >= 3 && path[0] == '/' && foldAscii(path[1]) >= 'a' &&
                        foldAscii(path[1]) <= 'z' && path[2] == ':';
  if (hasDrive) path.erase(0, 1);
  return path;
}

bool isPathSeparator(char c) noexcept {
  return c == '\\' || c == '/' || c == ':';
}

}  // namespace mmsbrix::platform
