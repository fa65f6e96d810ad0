// The packet dissector, an independent program that reads what we encode.
#ifndef MMSBRIX_TESTS_SUPPORT_DISSECTOR_H
#define MMSBRIX_TESTS_SUPPORT_DISSECTOR_H

#include <gtest/gtest.h>
#include <stdio.h>

#include <array>
#include <memory>
#include <string>

#include "support/counterparty.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {

/// A test with the dissector; without one it is skipped, or fails where it must be installed.
class DissectorTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!isThere() && !mustBeInstalled()) GTEST_SKIP() << "tshark is not installed";
    ASSERT_TRUE(isThere());
  }
  /// What the dissector says of a capture file.
  static std::string run(const std::string& file, const std::string& options) {
    return outputOf("TZ=UTC tshark -n -r '" + file + "' " + options + " 2>/dev/null");
  }
  TemporaryFolder folder_;

 private:
  static bool isThere() {
    return outputOf("tshark --version 2>/dev/null").find("TShark") != std::string::npos;
  }
  static std::string outputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), &::pclose);
    std::string output;
    std::array<char, 4096> chunk;
    for (std::size_t got = 0;
         pipe && (got = std::fread(chunk.data(), 1, chunk.size(), pipe.get())) > 0;) {
      output.append(chunk.data(), got);
    }
    return output;
  }
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_DISSECTOR_H
