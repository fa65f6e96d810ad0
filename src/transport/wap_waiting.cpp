#include "transport/wap_waiting.h"

#include <chrono>
#include <functional>
#include <utility>

#include "platform/host_events.h"
#include "transport/wap_stack.h"

namespace mmsbrix {
namespace {

struct HostPump {
  std::mutex mutex;
  std::function<void()> pump;
};

HostPump& hostPump() {
  static HostPump pump;
  return pump;
}

void keepHostAlive() {
  platform::dispatchHostEvents();
  std::function<void()> pump;
  {
    const std::lock_guard lock(hostPump().mutex);
    pump = hostPump().pump;
  }
  if (pump) pump();  // not locked: it may set another
}

}  // namespace

void setHostPump(std::function<void()> pump) {
  const std::lock_guard lock(hostPump().mutex);
  hostPump().pump = std::move(pump);
}

void WaitedState::set(std::uint32_t state) noexcept {
  const std::lock_guard lock(mutex_);
  state_.store(state, std::memory_order_release);
  changed_.notify_all();
}

bool WaitedState::change(std::uint32_t expected, std::uint32_t state) noexcept {
  return state_.compare_exchange_strong(expected, state, std::memory_order_acq_rel);
}

void WaitedState::waitWhile(std::uint32_t state) {
  constexpr std::chrono::milliseconds kPoll{10};
  while (get() == state) {
    keepHostAlive();
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kPoll, [this, state] { return get() != state; });
  }
}

}  // namespace mmsbrix
