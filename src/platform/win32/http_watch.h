// An exchange whose progress is told while it blocks.
#ifndef MMSBRIX_PLATFORM_WIN32_HTTP_WATCH_H
#define MMSBRIX_PLATFORM_WIN32_HTTP_WATCH_H

#include <atomic>
#include <cstdint>
#include <functional>

#include "platform/http.h"

namespace mmsbrix::platform {

/// What an exchange has moved so far, told by the thread that runs it.
class ExchangeCounts {
 public:
  explicit ExchangeCounts(std::uint64_t total);
  ExchangeCounts(const ExchangeCounts&) = delete;
  ExchangeCounts& operator=(const ExchangeCounts&) = delete;
  ~ExchangeCounts();

  void set(std::uint64_t done, std::uint64_t total) noexcept;
  [[nodiscard]] std::uint64_t done() const noexcept { return done_; }
  [[nodiscard]] std::uint64_t total() const noexcept { return total_; }
  /// A handle of the system that is signalled once after each change.
  [[nodiscard]] void* changed() const noexcept { return changed_; }

 private:
  std::atomic<std::uint64_t> done_{0};
  std::atomic<std::uint64_t> total_;
  void* const changed_;
};

/// Runs `exchange` on a thread of its own while this one tells `progress` of its counts.  When that
/// cancels it, `cancel` is called, which must make `exchange` return soon.  The result of
/// `exchange`, or 12017 when it was cancelled; what it throws is thrown here.
unsigned watchExchange(const std::function<unsigned(ExchangeCounts&)>& exchange,
                       const std::function<void()>& cancel, std::uint64_t total,
                       const SendProgress& progress);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_WIN32_HTTP_WATCH_H
