// A network that loses, repeats, reorders and delays datagrams, by a seed, on a clock that jumps
// from one happening to the next.  The same seed gives the same run.
#ifndef MMSBRIX_TESTS_WAPSTACK_SIMULATED_NETWORK_H
#define MMSBRIX_TESTS_WAPSTACK_SIMULATED_NETWORK_H

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "wapstack/wtp_settings.h"
#include "wsp/octets.h"

namespace mmsbrix::test {

using std::chrono::milliseconds;
using wtp::TimePoint;
using Message = std::vector<std::uint8_t>;

class SimulatedNetwork {
 public:
  /// One seed in five has a network that loses nothing.
  explicit SimulatedNetwork(std::uint64_t seed) : state_(seed) {
    if (!chance(0.2)) {
      loss_ = 0.3 * real();
      repeat_ = 0.2 * real();
    }
    delay_ = milliseconds(number(1, 300));
    jitter_ = chance(0.3) ? 0 : number(0, 900);
  }

  double real() { return static_cast<double>(next() >> 11) * 0x1p-53; }
  bool chance(double probability) { return real() < probability; }
  std::size_t number(std::size_t low, std::size_t high) {
    return low + static_cast<std::size_t>(next() % (high - low + 1));
  }
  Message octets(std::size_t count) {
    Message made(count + 7);
    for (std::size_t i = 0; i < count; i += 8) {
      const std::uint64_t eight = next();
      std::memcpy(made.data() + i, &eight, std::min<std::size_t>(8, made.size() - i));
    }
    made.resize(count);
    return made;
  }

  [[nodiscard]] TimePoint now() const noexcept { return now_; }
  [[nodiscard]] bool lossless() const noexcept { return loss_ == 0; }
  [[nodiscard]] std::size_t datagrams() const noexcept { return datagrams_; }

  void in(std::size_t delay, std::function<void()> action) {
    later_.emplace(now_ + milliseconds(delay), std::move(action));
  }
  /// Carries a datagram to `deliver`, if it arrives, as often as it arrives.
  template <typename Deliver>
  void carry(Octets datagram, Deliver deliver) {
    ++datagrams_;
    const int copies = (chance(loss_) ? 0 : 1) + (chance(repeat_) ? 1 : 0);
    for (int copy = 0; copy < copies; ++copy) {
      std::size_t flight = static_cast<std::size_t>(delay_.count()) + number(0, jitter_);
      // A copy may also come when all is long over.
      if (copy > 0 && chance(0.1)) flight += number(0, 100000);
      in(flight, [deliver, kept = Message(datagram.begin(), datagram.end())] { deliver(kept); });
    }
  }
  /// Lets time pass until neither an action nor a timer is left.  `deadline` gives the next timer,
  /// `onTimer` runs what is due, `collect` takes what has come of it.
  template <typename Deadline, typename OnTimer, typename Collect>
  void run(Deadline deadline, OnTimer onTimer, Collect collect) {
    for (auto timer = deadline(); timer || !later_.empty(); timer = deadline()) {
      if (timer && (later_.empty() || *timer < later_.begin()->first)) {
        now_ = std::max(now_, *timer);
        onTimer();
      } else {
        now_ = later_.begin()->first;
        const auto action = std::move(later_.begin()->second);
        later_.erase(later_.begin());
        action();
      }
      collect();
      if (now_ > TimePoint{} + std::chrono::hours(3)) {
        ADD_FAILURE() << "does not end";
        return;
      }
    }
  }

 private:
  /// SplitMix64: as good as needed, and fast where nothing is optimised.
  std::uint64_t next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15u);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }

  std::uint64_t state_;
  double loss_ = 0;
  double repeat_ = 0;
  milliseconds delay_{};
  std::size_t jitter_ = 0;
  TimePoint now_;
  std::multimap<TimePoint, std::function<void()>> later_;
  std::size_t datagrams_ = 0;
};

inline std::optional<std::uint64_t> fromEnvironment(const char* name) {
  const char* text = std::getenv(name);
  if (text == nullptr) return std::nullopt;
  return std::strtoull(text, nullptr, 10);
}

/// Runs `simulate` for each seed up to the first that fails, which the variable runs again alone.
/// True when all were run, so that their sums mean something.
template <typename Simulate>
bool forEachSeed(const char* variable, std::uint64_t seeds, Simulate simulate) {
  if (const auto seed = fromEnvironment(variable)) {
    simulate(*seed);
    return false;
  }
  if (const auto many = fromEnvironment("WAP_SEEDS")) seeds = *many;
  for (std::uint64_t seed = 0; seed < seeds; ++seed) {
    simulate(seed);
    if (!testing::Test::HasFailure()) continue;
    ADD_FAILURE() << variable << "=" << seed << " runs this one again";
    return false;
  }
  return true;
}

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_WAPSTACK_SIMULATED_NETWORK_H
