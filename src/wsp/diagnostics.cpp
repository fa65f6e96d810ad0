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

}  // namespace

void setDiagnosticsSink(DiagnosticsSink sink) {
  SinkHolder& target = holder();
  const std::lock_guard lock(target.mutex);
  target.wanted = static_cast<bool>(sink);
  std::swap(target.sink, sink);
}

bool diagnosticsWanted() noexcept {
  return holder().wanted.load(std::memory_order_relaxed);
}

void report(DiagnosticKind kind, std::string_view source, unsigned line,
            std::string_view text) noexcept {
  if (!diagnosticsWanted()) return;
  try {
    SinkHolder& target = holder();
    const std::lock_guard lock(target.mutex);
    if (target.sink) target.sink(Diagnostic{kind, source, line, text});
  } catch (...) {  // NOLINT(bugprone-empty-catch): a sink that fails must not stop the coding
  }
}

}  // namespace mmsbrix
