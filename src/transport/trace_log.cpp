#include "transport/trace_log.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>
#include <utility>

#include "platform/trace_monitor.h"
#include "transport/trace.h"

namespace mmsbrix {
namespace {

/// A line with its terminating zero.
constexpr std::size_t kLineSize = 2048;

struct TraceLog {
  std::atomic<bool> listening{false};
  std::mutex mutex;  // guards the rest; held while the sink is called
  TraceSink sink;
  bool monitor = false;
};

TraceLog& traceLog() {
  static TraceLog log;
  return log;
}

/// A line that cannot be delivered is lost: what is traced goes on.
void deliver(std::string_view line) noexcept {
  TraceLog& log = traceLog();
  try {
    const std::lock_guard lock(log.mutex);
    if (log.monitor) platform::sendToTraceMonitor(std::string(line));
    if (log.sink) log.sink(line);
  } catch (...) {  // NOLINT(bugprone-empty-catch): the host's own
  }
}

}  // namespace

void setTraceSink(TraceSink sink) {
  TraceLog& log = traceLog();
  const std::lock_guard lock(log.mutex);
  log.sink = std::move(sink);
  log.listening = log.monitor || log.sink;
}

void findTraceMonitor() {
  static const bool kFound = platform::findTraceMonitor();
  if (!kFound) return;
  TraceLog& log = traceLog();
  const std::lock_guard lock(log.mutex);
  log.monitor = true;
  log.listening = true;
}

bool tracing() noexcept {
  return traceLog().listening.load(std::memory_order_relaxed);
}

// NOLINTBEGIN(cert-dcl50-cpp,clang-analyzer-valist.Uninitialized): the lines are printf formats,
// which the compiler checks; the analyzer takes va_start for no initialisation.
void trace(const char* format, ...) {
  if (!tracing()) return;
  std::array<char, kLineSize> line{};
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(line.data(), line.size(), format, arguments);
  va_end(arguments);
  if (length >= 0) deliver(line.data());
}
// NOLINTEND(cert-dcl50-cpp,clang-analyzer-valist.Uninitialized)

void traceOctets(std::string_view prefix, std::span<const std::uint8_t> octets) {
  if (!tracing()) return;
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string line(prefix.substr(0, kLineSize - 1));
  for (const std::uint8_t octet : octets) {
    if (line.size() >= kLineSize - 1) break;
    line += {kDigits[octet >> 4], kDigits[octet & 0x0F], ' '};
  }
  line.resize(std::min(line.size(), kLineSize - 1));
  deliver(line);
}

}  // namespace mmsbrix
