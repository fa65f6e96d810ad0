#include "platform/worker_thread.h"

#include <atomic>
#include <system_error>
#include <thread>
#include <utility>

namespace mmsbrix::platform {

struct WorkerThread::State {
  std::thread thread;
  // Of the thread that runs; it may ask before start() has returned.
  std::atomic<std::thread::id> running;
};

WorkerThread::WorkerThread() : state_(std::make_unique<State>()) {}

WorkerThread::~WorkerThread() {
  finish();
}

bool WorkerThread::start(std::function<void()> work) {
  try {
    state_->thread = std::thread([state = state_.get(), work = std::move(work)] {
      state->running = std::this_thread::get_id();
      work();
      state->running = std::thread::id();
    });
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

void WorkerThread::finish() noexcept {
  if (state_->thread.joinable()) state_->thread.join();
}

bool WorkerThread::isCurrent() const noexcept {
  return std::this_thread::get_id() == state_->running;
}

}  // namespace mmsbrix::platform
