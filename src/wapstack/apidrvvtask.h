// The protocol thread of the process: everything between a session request and the datagrams runs
// on it.  Requests are queued to it; what comes of them is told by callbacks on it.
#ifndef MMSBRIX_WAPSTACK_APIDRVVTASK_H
#define MMSBRIX_WAPSTACK_APIDRVVTASK_H

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/worker_thread.h"
#include "wapstack/wdp_address.h"
#include "wsp/octets.h"

namespace asio {
class io_context;
}

namespace mmsbrix {

/// Told of every datagram, on the protocol thread.
using DatagramHook = std::function<void(const WdpAddress& peer, Octets datagram)>;

/// Something that lives on the protocol thread and must be closed before the thread ends.
class ProtocolMember {
 public:
  ProtocolMember() = default;
  ProtocolMember(const ProtocolMember&) = delete;
  ProtocolMember& operator=(const ProtocolMember&) = delete;
  virtual ~ProtocolMember() = default;
  /// On the protocol thread; ends what is under way by its callbacks.
  virtual void shutDown() noexcept = 0;
};

class ApiDriverTask {
 public:
  static constexpr std::size_t kMinUnitSize = 1000;
  static constexpr std::size_t kMaxUnitSize = 65000;

  /// The one of the process.  It is released when the library is unloaded.
  static ApiDriverTask& instance();

  ApiDriverTask();
  ApiDriverTask(const ApiDriverTask&) = delete;
  ApiDriverTask& operator=(const ApiDriverTask&) = delete;
  /// release()
  ~ApiDriverTask();

  /// Octets of user data in one packet, for the ports that are created from now on; any value is
  /// brought into the range from kMinUnitSize to kMaxUnitSize.
  void setUnitSize(std::size_t octets) noexcept;
  [[nodiscard]] std::size_t unitSize() const noexcept { return unitSize_; }
  /// Before start().
  void setDatagramHooks(DatagramHook sent, DatagramHook received);

  /// Starts the thread unless it runs.  False when it could not be started; to be tried again.
  bool start();
  [[nodiscard]] bool running();
  /// Ends what is under way by its callbacks, then the thread.  Does nothing when it does not run,
  /// and on the thread itself.
  void release() noexcept;

  /// Queues a job, in order; jobs must not throw.  False, with the job not taken, when the thread
  /// does not run.
  bool post(std::function<void()> job);
  /// Waits until a release that is under way is over, and with it the callbacks that it makes; on
  /// the thread itself it returns at once.
  void awaitRelease();
  /// The same as post(), and waits until it is done; on the thread itself it is done at once.
  bool run(const std::function<void()>& job);
  [[nodiscard]] bool onThread() const noexcept;

  /// For the members, on the thread.
  void join(std::shared_ptr<ProtocolMember> member);
  void leave(const ProtocolMember* member) noexcept;
  void traceSent(const WdpAddress& peer, Octets datagram) const;
  void traceReceived(const WdpAddress& peer, Octets datagram) const;
  /// What has a socket or a timer keeps it, since a static object may outlive this one.
  [[nodiscard]] const std::shared_ptr<asio::io_context>& context() noexcept { return context_; }

 private:
  void work() noexcept;
  void shutDownMembers() noexcept;

  std::atomic<std::size_t> unitSize_{1400};
  DatagramHook sent_;
  DatagramHook received_;
  std::shared_ptr<asio::io_context> context_;
  platform::WorkerThread thread_;
  std::vector<std::shared_ptr<ProtocolMember>> members_;  // the thread's own
  std::mutex startMutex_;                                 // one start or release at a time
  std::mutex mutex_;  // guards running_ and with it the order of the queue
  bool running_ = false;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_WAPSTACK_APIDRVVTASK_H
