#include "platform/worker_thread.h"

#include <windows.h>

#include <atomic>
#include <utility>

namespace mmsbrix::platform {

// The end of a thread needs the loader's lock, which the thread that unloads the library holds
// while it waits here.  So a thread whose work is done says so and waits in the system in one step,
// never to come back into this code; there it holds nothing, and is ended from outside.
struct WorkerThread::State {
  std::function<void()> work;
  HANDLE thread = nullptr;
  HANDLE done = nullptr;
  HANDLE never = nullptr;
  std::atomic<DWORD> running{0};  // its number, from the beginning of its work to the end

  ~State() {
    for (const HANDLE handle : {thread, done, never}) {
      if (handle != nullptr) ::CloseHandle(handle);
    }
  }

  static DWORD WINAPI run(void* parameter) noexcept {
    auto& state = *static_cast<State*>(parameter);
    state.running = ::GetCurrentThreadId();
    state.work();
    state.work = nullptr;
    state.running = 0;
    for (;;) ::SignalObjectAndWait(state.done, state.never, INFINITE, FALSE);
  }
};

WorkerThread::WorkerThread() : state_(std::make_unique<State>()) {}

WorkerThread::~WorkerThread() {
  finish();
}

bool WorkerThread::start(std::function<void()> work) {
  auto state = std::make_unique<State>();
  state->work = std::move(work);
  state->done = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
  state->never = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
  if (state->done == nullptr || state->never == nullptr) return false;
  // It may ask isCurrent() before this returns.
  state_ = std::move(state);
  state_->thread = ::CreateThread(nullptr, 0, &State::run, state_.get(), 0, nullptr);
  return state_->thread != nullptr;
}

void WorkerThread::finish() noexcept {
  if (state_->thread == nullptr) return;
  // When the process ends, the system has ended the thread before, wherever it was.
  const HANDLE either[] = {state_->thread, state_->done};
  if (::WaitForMultipleObjects(2, either, FALSE, INFINITE) != WAIT_OBJECT_0) {
    ::TerminateThread(state_->thread, 0);
    ::WaitForSingleObject(state_->thread, INFINITE);
  }
  ::CloseHandle(std::exchange(state_->thread, nullptr));
}

bool WorkerThread::isCurrent() const noexcept {
  return ::GetCurrentThreadId() == state_->running;
}

}  // namespace mmsbrix::platform
