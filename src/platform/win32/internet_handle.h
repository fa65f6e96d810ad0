// A handle of WinINet with its owner.
#ifndef MMSBRIX_PLATFORM_WIN32_INTERNET_HANDLE_H
#define MMSBRIX_PLATFORM_WIN32_INTERNET_HANDLE_H

#include <windows.h>

#include <wininet.h>

#include <atomic>

namespace mmsbrix::platform {

class InternetHandle {
 public:
  explicit InternetHandle(HINTERNET handle = nullptr) noexcept : handle_(handle) {}
  InternetHandle(InternetHandle&& other) noexcept : handle_(other.handle_.exchange(nullptr)) {}
  InternetHandle& operator=(InternetHandle&& other) noexcept {
    close();
    handle_ = other.handle_.exchange(nullptr);
    return *this;
  }
  ~InternetHandle() { close(); }

  [[nodiscard]] HINTERNET get() const noexcept { return handle_; }
  explicit operator bool() const noexcept { return get() != nullptr; }
  /// Ends what goes on with the handle on any thread.
  void close() noexcept {
    if (const HINTERNET open = handle_.exchange(nullptr)) ::InternetCloseHandle(open);
  }

 private:
  std::atomic<HINTERNET> handle_;
};

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_WIN32_INTERNET_HANDLE_H
