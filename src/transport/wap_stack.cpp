#include "transport/wap_stack.h"

#include <mutex>

#include "platform/text.h"
#include "transport/trace.h"
#include "transport/wap_start.h"
#include "wapstack/exception_log.h"

namespace mmsbrix {

ApiDriverTask& startWapStack() {
  constexpr std::size_t kUnitSize = 1400;
  // The trace log is there first, so that it outlives the stack when the library is unloaded.
  findTraceMonitor();
  static_cast<void>(tracing());
  ApiDriverTask& task = ApiDriverTask::instance();
  static std::mutex starting;  // so that one of several callers starts it, and traces that
  const std::lock_guard lock(starting);
  if (task.running()) return task;
  task.setUnitSize(kUnitSize);
  task.setDatagramHooks([](const WdpAddress&, Octets datagram) { traceOctets("--> ", datagram); },
                        [](const WdpAddress&, Octets datagram) { traceOctets("<-- ", datagram); });
  if (task.start()) trace("WAP/MMS stack started.");
  return task;
}

void releaseWapStack() {
  ApiDriverTask::instance().release();
}

void setExceptionLogFolder(const char* folder) {
  useExceptionLogFolder(orEmpty(folder));
}

}  // namespace mmsbrix
