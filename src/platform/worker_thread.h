// Seam: a thread of the library's own that can be ended while the library is being unloaded.
#ifndef MMSBRIX_PLATFORM_WORKER_THREAD_H
#define MMSBRIX_PLATFORM_WORKER_THREAD_H

#include <functional>
#include <memory>

namespace mmsbrix::platform {

class WorkerThread {
 public:
  WorkerThread();
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;
  /// finish()
  ~WorkerThread();

  /// Runs `work`, which must not throw, on a new thread; false when the system gives none.
  bool start(std::function<void()> work);
  /// Waits for the end of `work`; after this no code of the library runs on the thread.  May be
  /// called while the platform's loader unloads the library.
  void finish() noexcept;
  /// True on the thread itself.
  [[nodiscard]] bool isCurrent() const noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_WORKER_THREAD_H
