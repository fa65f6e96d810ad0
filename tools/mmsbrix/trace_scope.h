// Showing the library's trace.
#ifndef MMSBRIX_TOOLS_TRACE_SCOPE_H
#define MMSBRIX_TOOLS_TRACE_SCOPE_H

#include <mmsbrix/transport/trace_log.h>

#include <ostream>
#include <string_view>

#include "command.h"

namespace mmsbrix::tool {

/// Traces go to the stream for as long as this lives.
class TraceScope {
 public:
  TraceScope(bool wanted, std::ostream& out) : wanted_(wanted) {
    if (wanted) setTraceSink([&out](std::string_view line) { out << printable(line) << '\n'; });
  }
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;
  ~TraceScope() {
    if (wanted_) setTraceSink({});
  }

 private:
  bool wanted_;
};

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_TRACE_SCOPE_H
