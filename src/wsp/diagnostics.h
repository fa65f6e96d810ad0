/// @file
/// Diagnostics of the WSP coding: errors, assertion failures and warnings go to one process-wide
/// sink. Without a sink, the default, they are dropped.  Nothing here prints, throws or exits.
#ifndef MMSBRIX_WSP_DIAGNOSTICS_H
#define MMSBRIX_WSP_DIAGNOSTICS_H

#include <functional>
#include <string_view>

#include "../export.h"

namespace mmsbrix {

/// How bad it is.
enum class DiagnosticKind {
  error,      ///< the operation fails
  assertion,  ///< an assertion about the input failed; the operation fails
  warning,    ///< the operation goes on
};

/// One report.  The views are valid during the call of the sink only.
struct Diagnostic {
  DiagnosticKind kind;      ///< what becomes of the operation
  std::string_view source;  ///< the reporting source's name, such as "wsp_header_coding"
  unsigned line;            ///< line in that source
  std::string_view text;    ///< for people, without line end
};

/// Receives one report at a time.
using DiagnosticsSink = std::function<void(const Diagnostic&)>;

/// Replaces the sink of the process; an empty one silences it.  The sink may be called from any
/// thread that codes WSP values, one call at a time, and must not set a sink itself.
MMSBRIX_API void setDiagnosticsSink(DiagnosticsSink sink);

}  // namespace mmsbrix

#endif  // MMSBRIX_WSP_DIAGNOSTICS_H
