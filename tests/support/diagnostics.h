// Collects the diagnostics of a scope, so that a test can compare them as one text.
#ifndef MMSBRIX_TESTS_SUPPORT_DIAGNOSTICS_H
#define MMSBRIX_TESTS_SUPPORT_DIAGNOSTICS_H

#include <string>
#include <utility>

#include "wsp/diagnostics.h"

namespace mmsbrix::test {

/// Is the sink of the process while it lives; one at a time.
class Reports {
 public:
  Reports() {
    setDiagnosticsSink([this](const Diagnostic& diagnostic) {
      constexpr const char* kKinds[] = {"error ", "assertion ", "warning "};
      texts_ += kKinds[static_cast<int>(diagnostic.kind)];
      texts_.append(diagnostic.source).append(": ").append(diagnostic.text).append("\n");
    });
  }
  Reports(const Reports&) = delete;
  Reports& operator=(const Reports&) = delete;
  ~Reports() { setDiagnosticsSink({}); }

  /// One line per report so far: "<kind> <source>: <text>".
  [[nodiscard]] const std::string& texts() const { return texts_; }
  /// The lines so far; they are forgotten.
  [[nodiscard]] std::string take() { return std::exchange(texts_, {}); }

 private:
  std::string texts_;
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_DIAGNOSTICS_H
