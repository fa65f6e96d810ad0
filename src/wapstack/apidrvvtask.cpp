#include "wapstack/apidrvvtask.h"

#include <algorithm>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <exception>
#include <future>
#include <utility>

#include "wapstack/exception_log.h"
#include "wsp/report.h"

namespace mmsbrix {
namespace {

constexpr std::string_view kSource = "apidrvvtask";

// Set while a thread runs as protocol thread; tells reports made on it from those of others.
thread_local const ApiDriverTask* currentTask = nullptr;

void logReport(const Diagnostic& diagnostic) noexcept {
  if (currentTask == nullptr) return;
  if (diagnostic.kind == DiagnosticKind::assertion) {
    logAssertion(diagnostic.source, diagnostic.line, diagnostic.text);
  } else {
    logException(diagnostic.source, diagnostic.line, diagnostic.text);
  }
}

}  // namespace

ApiDriverTask& ApiDriverTask::instance() {
  static ApiDriverTask task;
  return task;
}

// Not with the hint that one thread runs it: what that thread posts would then stand back behind
// what others post later.
ApiDriverTask::ApiDriverTask() : context_(std::make_shared<asio::io_context>()) {}

ApiDriverTask::~ApiDriverTask() {
  release();
}

void ApiDriverTask::setUnitSize(std::size_t octets) noexcept {
  unitSize_ = std::clamp(octets, kMinUnitSize, kMaxUnitSize);
}

void ApiDriverTask::setDatagramHooks(DatagramHook sent, DatagramHook received) {
  const std::lock_guard starting(startMutex_);
  const std::lock_guard lock(mutex_);
  if (running_) return;
  sent_ = std::move(sent);
  received_ = std::move(received);
}

bool ApiDriverTask::start() {
  const std::lock_guard starting(startMutex_);
  const std::lock_guard lock(mutex_);
  if (running_) return true;
  context_->restart();
  setReportListener(logReport);
  running_ = thread_.start([this] { work(); });
  return running_;
}

bool ApiDriverTask::running() {
  const std::lock_guard lock(mutex_);
  return running_;
}

void ApiDriverTask::release() noexcept {
  if (onThread()) return;
  const std::lock_guard starting(startMutex_);
  try {
    const std::lock_guard lock(mutex_);
    if (!std::exchange(running_, false)) return;
    // Behind everything that was queued before.
    asio::post(*context_, [this] {
      shutDownMembers();
      context_->stop();
    });
  } catch (...) {  // no memory for the job: the members are shut down below all the same
    context_->stop();
  }
  setReportListener(nullptr);
  thread_.finish();
  shutDownMembers();
  try {
    context_->restart();
    context_->poll();  // what was cancelled lets go of what it held
  } catch (...) {      // NOLINT(bugprone-empty-catch): nothing of it is needed any more
  }
}

bool ApiDriverTask::post(std::function<void()> job) {
  const std::lock_guard lock(mutex_);
  if (!running_) return false;
  asio::post(*context_, std::move(job));
  return true;
}

bool ApiDriverTask::run(const std::function<void()>& job) {
  if (onThread()) {
    job();
    return true;
  }
  // A job that is dropped unrun breaks its promise, which ends the wait as well.
  auto done = std::make_shared<std::promise<void>>();
  std::future<void> finished = done->get_future();
  if (!post([&job, done = std::move(done)] {
        job();
        done->set_value();
      })) {
    awaitRelease();
    return false;
  }
  finished.wait();
  return true;
}

void ApiDriverTask::awaitRelease() {
  if (!onThread()) const std::lock_guard released(startMutex_);
}

bool ApiDriverTask::onThread() const noexcept {
  return currentTask == this;
}

void ApiDriverTask::join(std::shared_ptr<ProtocolMember> member) {
  members_.push_back(std::move(member));
}

void ApiDriverTask::leave(const ProtocolMember* member) noexcept {
  std::erase_if(members_, [member](const auto& one) { return one.get() == member; });
}

void ApiDriverTask::traceSent(const WdpAddress& peer, Octets datagram) const {
  if (sent_) sent_(peer, datagram);
}

void ApiDriverTask::traceReceived(const WdpAddress& peer, Octets datagram) const {
  if (received_) received_(peer, datagram);
}

void ApiDriverTask::work() noexcept {
  currentTask = this;
  // Held across exceptions: a context without work stops for good.
  const auto guard = asio::make_work_guard(*context_);
  for (;;) {
    try {
      context_->run();
      break;
    } catch (const std::exception& exception) {
      logCriticalAssertion(kSource, __LINE__, exception.what());
    } catch (...) {
      logCriticalAssertion(kSource, __LINE__, "unknown exception");
    }
  }
  currentTask = nullptr;
}

void ApiDriverTask::shutDownMembers() noexcept {
  for (const auto& member : std::exchange(members_, {})) member->shutDown();
}

}  // namespace mmsbrix
