#include "wsp/diagnostics.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "wsp/report.h"

namespace mmsbrix {
namespace {

// Never destroyed: reports may come from other threads until the process ends.
struct SinkHolder {
  std::mutex mutex;
  DiagnosticsSink sink;
  std::atomic<bool> wanted{false};
};

SinkHolder& holder() noexcept {
  static SinkHolder& instance = *new SinkHolder;
  return instance;
}

std::atomic<void (*)(const Diagnostic&) noexcept> reportListener{nullptr};

}  // namespace

void setDiagnosticsSink(DiagnosticsSink sink) {
  SinkHolder& target = holder();
  const std::lock_guard lock(target.mutex);
  target.wanted = static_cast<bool>(sink);
  std::swap(target.sink, sink);
}

void setReportListener(void (*listener)(const Diagnostic&) noexcept) noexcept {
  reportListener = listener;
}

bool diagnosticsWanted() noexcept {
  return holder().wanted.load(std::memory_order_relaxed) || reportListener.load() != nullptr;
}

void report(DiagnosticKind kind, std::string_view source, unsigned line,
            std::string_view text) noexcept {
  if (const auto listener = reportListener.load()) listener({kind, source, line, text});
  SinkHolder& target = holder();
  if (!target.wanted.load(std::memory_order_relaxed)) return;
  try {
    const std::lock_guard lock(target.mutex);
    if (target.sink) target.sink(Diagnostic{kind, source, line, text});
  } catch (...) {  // NOLINT(bugprone-empty-catch): a sink that fails must not stop the coding
  }
}

}  // namespace mmsbrix
