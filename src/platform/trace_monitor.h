// Seam: a monitor program of the desktop that shows trace lines, where the platform has one.
#ifndef MMSBRIX_PLATFORM_TRACE_MONITOR_H
#define MMSBRIX_PLATFORM_TRACE_MONITOR_H

#include <string>

namespace mmsbrix::platform {

/// Looks the monitor up; true when one is there, which then counts as the monitor for the life of
/// the process.
bool findTraceMonitor();
/// Hands one line to the monitor that was found.
void sendToTraceMonitor(const std::string& line);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_TRACE_MONITOR_H
