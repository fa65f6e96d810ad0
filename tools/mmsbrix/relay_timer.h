// Connections of the relay that wait: suspended now, resumed at their time, so that a waiting
// exchange keeps no thread.
#ifndef MMSBRIX_TOOLS_RELAY_TIMER_H
#define MMSBRIX_TOOLS_RELAY_TIMER_H

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

struct MHD_Connection;

namespace mmsbrix::tool {

class RelayTimer {
 public:
  RelayTimer();
  RelayTimer(const RelayTimer&) = delete;
  RelayTimer& operator=(const RelayTimer&) = delete;
  ~RelayTimer();

  /// Suspends a connection for `duration`, then its handler is called again.  To be called from the
  /// connection's own handlers.  False, with the connection going on, once stopped.
  bool suspend(MHD_Connection* connection, std::chrono::milliseconds duration);
  /// Resumes every connection at once and suspends no more.
  void stop();

 private:
  using Clock = std::chrono::steady_clock;

  void run();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::multimap<Clock::time_point, MHD_Connection*> waiting_;
  bool stopped_ = false;
  std::thread thread_;
};

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_RELAY_TIMER_H
