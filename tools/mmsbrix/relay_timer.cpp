#include "relay_timer.h"

#include <microhttpd.h>

namespace mmsbrix::tool {

RelayTimer::RelayTimer() : thread_([this] { run(); }) {}

RelayTimer::~RelayTimer() {
  stop();
  thread_.join();
}

bool RelayTimer::suspend(MHD_Connection* connection, std::chrono::milliseconds duration) {
  const std::lock_guard lock(mutex_);
  if (stopped_) return false;
  MHD_suspend_connection(connection);
  waiting_.emplace(Clock::now() + duration, connection);
  changed_.notify_one();
  return true;
}

void RelayTimer::stop() {
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  for (const auto& [due, connection] : waiting_) MHD_resume_connection(connection);
  waiting_.clear();
  changed_.notify_one();
}

void RelayTimer::run() {
  std::unique_lock lock(mutex_);
  while (!stopped_) {
    if (waiting_.empty()) {
      changed_.wait(lock);
    } else if (const auto next = waiting_.begin(); next->first <= Clock::now()) {
      MHD_resume_connection(next->second);
      waiting_.erase(next);
    } else {
      const Clock::time_point due = next->first;
      changed_.wait_until(lock, due);
    }
  }
}

}  // namespace mmsbrix::tool
