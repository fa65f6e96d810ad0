// Independent programs that tests run against.
#ifndef MMSBRIX_TESTS_SUPPORT_COUNTERPARTY_H
#define MMSBRIX_TESTS_SUPPORT_COUNTERPARTY_H

#include <cstdlib>
#include <string_view>

namespace mmsbrix::test {

/// Under CI=true a missing counterparty fails its tests; elsewhere they are skipped.
inline bool mustBeInstalled() {
  const char* ci = std::getenv("CI");
  return ci != nullptr && std::string_view(ci) == "true";
}

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_COUNTERPARTY_H
