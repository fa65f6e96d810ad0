// Collects what the parse-error handler is told in a scope.
#ifndef MMSBRIX_TESTS_SUPPORT_PARSE_ERRORS_H
#define MMSBRIX_TESTS_SUPPORT_PARSE_ERRORS_H

#include <string>
#include <utility>

#include "smil/parse_error.h"

namespace mmsbrix::test {

// Nobody stands by to close a message box, which is what an error without a handler may open.
inline void passOverParseErrors() {
  setParseErrorHandler([](const std::string&, const std::string&) {});
}
inline const bool kParseErrorsPassedOver = (passOverParseErrors(), true);

/// Is the handler of the process while it lives; one at a time.
class ParseErrors {
 public:
  ParseErrors() {
    setParseErrorHandler([this](const std::string& caption, const std::string& reason) {
      texts_ += caption + ": " + reason + "\n";
    });
  }
  ParseErrors(const ParseErrors&) = delete;
  ParseErrors& operator=(const ParseErrors&) = delete;
  ~ParseErrors() { passOverParseErrors(); }

  /// "<caption>: <reason>" and a line end per error so far; they are forgotten.
  [[nodiscard]] std::string take() { return std::exchange(texts_, {}); }

 private:
  std::string texts_;
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_PARSE_ERRORS_H
