/// @file
/// The trace log: one line per step of a submission, to one process-wide sink that the host sets.
/// Without a sink, the default, every trace call returns at once.  Credentials are never traced.
#ifndef MMSBRIX_TRANSPORT_TRACE_LOG_H
#define MMSBRIX_TRANSPORT_TRACE_LOG_H

#include <functional>
#include <string_view>

#include "../export.h"

namespace mmsbrix {

/// Receives one line without line end, at most 2047 characters; the view lives as long as the call.
using TraceSink = std::function<void(std::string_view line)>;

/// Replaces the sink of the process; an empty one ends the tracing.  The sink is called from the
/// thread that sends and from that of the WAP stack, one call at a time, and must not set a sink
/// itself; what it throws is dropped with the line.
MMSBRIX_API void setTraceSink(TraceSink sink);

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_TRACE_LOG_H
