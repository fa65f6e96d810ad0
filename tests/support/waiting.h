// One network operation at a time, waited for: what blocking sockets would be if a wait could have
// an end and another thread could end it, on every platform.
#ifndef MMSBRIX_TESTS_SUPPORT_WAITING_H
#define MMSBRIX_TESTS_SUPPORT_WAITING_H

#include <asio/io_context.hpp>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <optional>
#include <system_error>

namespace mmsbrix::test {

class Waiting {
 public:
  /// For the objects whose operations are waited for.
  asio::io_context& context() noexcept { return context_; }

  /// Calls `start` with the handler of an operation on `object`, and waits for its end.  The octets
  /// that it moved, 0 for one that moves none; nothing when it failed, when `patience` was over, or
  /// when `stop` was called.
  template <class Object, class Start>
  std::optional<std::size_t> run(Object& object, const Start& start,
                                 std::optional<std::chrono::milliseconds> patience = std::nullopt) {
    std::optional<std::size_t> moved;
    context_.restart();
    if (stopped_) return std::nullopt;
    start([&moved](std::error_code error, std::size_t octets = 0) {
      if (!error) moved = octets;
    });
    if (!patience) {
      context_.run();
      return moved;
    }
    context_.run_for(*patience);
    if (!context_.stopped()) {
      object.cancel();
      context_.run();
    }
    return moved;
  }
  /// Ends the wait that is under way and every later one; from any thread.
  void stop() {
    stopped_ = true;
    context_.stop();
  }

 private:
  asio::io_context context_{1};
  std::atomic<bool> stopped_{false};
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_WAITING_H
