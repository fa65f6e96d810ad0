/// @file
/// The WAP protocol stack of the process, as far as hosts care for it.  It starts by itself with
/// the first connection through a WAP gateway, or the first PushListener, and runs one thread.
#ifndef MMSBRIX_TRANSPORT_WAP_STACK_H
#define MMSBRIX_TRANSPORT_WAP_STACK_H

#include <algorithm>
#include <chrono>
#include <functional>

#include "../export.h"

namespace mmsbrix {

/// How patient the stack is with a gateway.  The defaults are those of the standard for networks
/// that route IP.  [WAP-224 A]
struct WapTiming {
  std::chrono::milliseconds retryInterval{5000};  ///< before a request is repeated
  int maxRetries = 8;                             ///< then the gateway does not answer
  /// Longest silence of a gateway that has acknowledged a request and works on it.
  std::chrono::milliseconds silenceLimit{120000};
  std::chrono::milliseconds overallLimit{600000};  ///< from a request to its result

  /// The defaults, shortened to what fits into `limit`: nothing waits longer than that.
  [[nodiscard]] static WapTiming within(std::chrono::milliseconds limit) {
    WapTiming timing;
    timing.overallLimit = limit;
    timing.silenceLimit = std::min(timing.silenceLimit, limit);
    timing.retryInterval = std::min(timing.retryInterval, limit / 4);
    return timing;
  }
};

/// The folder (UTF-8) of the stack's log "exceptions.log"; null or empty for no log.  Without this
/// it stands in the user's folder for logs: $XDG_STATE_HOME/mmsbrix, ~/.local/state/mmsbrix.
MMSBRIX_API void setExceptionLogFolder(const char* folder);

/// Called about every 10 ms on the thread that waits for a gateway, so that the host stays alive;
/// on Windows after the thread's messages were dispatched.  It must not throw.  From there, and
/// from what it dispatches, a transport that waits takes no request; DisconnectGtw takes effect
/// when the wait is over.  An empty one ends that.
MMSBRIX_API void setHostPump(std::function<void()> pump);

/// Ends the stack's thread; what is under way fails.  Unloading the library does the same.  The
/// next connection starts it again.
MMSBRIX_API void releaseWapStack();

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_WAP_STACK_H
