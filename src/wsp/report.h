// How the library's own code reports to the diagnostics sink.
#ifndef MMSBRIX_WSP_REPORT_H
#define MMSBRIX_WSP_REPORT_H

#include <string_view>

#include "wsp/diagnostics.h"

namespace mmsbrix {

/// True when somebody reads reports, so that a costly text is not built for nobody.
[[nodiscard]] bool diagnosticsWanted() noexcept;
/// Hands one report to the sink, if any.  Exceptions of the sink are swallowed.
void report(DiagnosticKind kind, std::string_view source, unsigned line,
            std::string_view text) noexcept;

/// A second reader of all reports, for the protocol stack's own log; null for none.  It must not
/// throw.
void setReportListener(void (*listener)(const Diagnostic&) noexcept) noexcept;

}  // namespace mmsbrix

#define MMSBRIX_REPORT_ERROR(source, text) \
  ::mmsbrix::report(::mmsbrix::DiagnosticKind::error, source, __LINE__, text)
#define MMSBRIX_REPORT_WARNING(source, text) \
  ::mmsbrix::report(::mmsbrix::DiagnosticKind::warning, source, __LINE__, text)
#define MMSBRIX_REPORT_ASSERTION(source, text) \
  ::mmsbrix::report(::mmsbrix::DiagnosticKind::assertion, source, __LINE__, text)

#endif  // MMSBRIX_WSP_REPORT_H
