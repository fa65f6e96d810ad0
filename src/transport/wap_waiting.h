// Waiting on the host's thread for what the stack's thread does, without freezing the host.
#ifndef MMSBRIX_TRANSPORT_WAP_WAITING_H
#define MMSBRIX_TRANSPORT_WAP_WAITING_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace mmsbrix {

/// A state word that one thread sets and another waits on.  What was written before set() may be
/// read by whoever has seen the new state.
class WaitedState {
 public:
  explicit WaitedState(std::uint32_t initial) noexcept : state_(initial) {}

  [[nodiscard]] std::uint32_t get() const noexcept {
    return state_.load(std::memory_order_acquire);
  }
  void set(std::uint32_t state) noexcept;
  /// Sets it where it is still `expected`.
  bool change(std::uint32_t expected, std::uint32_t state) noexcept;
  /// Dispatches the host's events every 10 ms while the state is `state`; returns at once when it
  /// changes.
  void waitWhile(std::uint32_t state);

 private:
  std::atomic<std::uint32_t> state_;
  static_assert(std::atomic<std::uint32_t>::is_always_lock_free);
  std::mutex mutex_;
  std::condition_variable changed_;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_WAP_WAITING_H
