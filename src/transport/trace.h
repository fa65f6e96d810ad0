// What the library writes to the trace log.  Without a sink every call returns at once.
#ifndef MMSBRIX_TRANSPORT_TRACE_H
#define MMSBRIX_TRANSPORT_TRACE_H

#include <cstdint>
#include <span>
#include <string_view>

namespace mmsbrix {

/// Looks up the platform's trace monitor, once per process.
void findTraceMonitor();

/// True when there is a sink, or a monitor that listens.
[[nodiscard]] bool tracing() noexcept;

/// Formats one line like printf; what goes beyond 2047 characters is cut off.
[[gnu::format(printf, 1, 2)]] void trace(const char* format, ...);

/// A line of `prefix` and the octets, two hex digits and a space each, cut off likewise.
void traceOctets(std::string_view prefix, std::span<const std::uint8_t> octets);

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_TRACE_H
