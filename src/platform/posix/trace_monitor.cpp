#include "platform/trace_monitor.h"

namespace mmsbrix::platform {

// No monitor program here: hosts set a sink of their own.
bool findTraceMonitor() {
  return false;
}

void sendToTraceMonitor(const std::string&) {}

}  // namespace mmsbrix::platform
