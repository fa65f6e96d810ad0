#include "platform/win32/http_watch.h"

#include <windows.h>

#include <exception>

namespace mmsbrix::platform {
namespace {

constexpr DWORD kTellMilliseconds = 1000;

struct Job {
  const std::function<unsigned(ExchangeCounts&)>& exchange;
  ExchangeCounts& counts;
  unsigned result = 0;
  std::exception_ptr exception;

  static DWORD WINAPI run(void* parameter) noexcept {
    Job& job = *static_cast<Job*>(parameter);
    try {
      job.result = job.exchange(job.counts);
    } catch (...) {
      job.exception = std::current_exception();
    }
    return 0;
  }
};

bool goesOn(const SendProgress& progress, const ExchangeCounts& counts) noexcept {
  try {
    return progress(counts.done(), counts.total());
  } catch (...) {
    return false;
  }
}

}  // namespace

ExchangeCounts::ExchangeCounts(std::uint64_t total)
    : total_(total), changed_(::CreateEventA(nullptr, FALSE, FALSE, nullptr)) {}

ExchangeCounts::~ExchangeCounts() {
  ::CloseHandle(changed_);
}

void ExchangeCounts::set(std::uint64_t done, std::uint64_t total) noexcept {
  total_ = total;
  done_ = done;
  ::SetEvent(changed_);
}

unsigned watchExchange(const std::function<unsigned(ExchangeCounts&)>& exchange,
                       const std::function<void()>& cancel, std::uint64_t total,
                       const SendProgress& progress) {
  ExchangeCounts counts(total);
  if (!goesOn(progress, counts)) return kInternetOperationCancelled;
  Job job{exchange, counts, 0, nullptr};
  const HANDLE thread = ::CreateThread(nullptr, 0, &Job::run, &job, 0, nullptr);
  if (thread == nullptr) return ::GetLastError();
  const HANDLE either[] = {thread, counts.changed()};
  bool cancelled = false;
  while (::WaitForMultipleObjects(2, either, FALSE, kTellMilliseconds) != WAIT_OBJECT_0) {
    if (goesOn(progress, counts)) continue;
    cancelled = true;
    cancel();
    ::WaitForSingleObject(thread, INFINITE);
    break;
  }
  ::CloseHandle(thread);
  // The last counts are told too, unless the exchange failed.
  if (!cancelled && job.result == 0 && job.exception == nullptr) {
    cancelled = !goesOn(progress, counts);
  }
  if (cancelled) return kInternetOperationCancelled;
  if (job.exception != nullptr) std::rethrow_exception(job.exception);
  return job.result;
}

}  // namespace mmsbrix::platform
