#include "wsp/header_block.h"

#include <gtest/gtest.h>

#include "support/hex.h"
#include "wsp/header_vectors.h"

namespace mmsbrix::test {
namespace {

TEST(HeaderBlock, EveryVectorBothWays) {
  for (const HeaderVector& vector : kHeaderVectors) {
    SCOPED_TRACE(std::string(vector.name) + ": " + vector.value);
    const auto octets = hex(vector.octets);
    const auto encoded = encodeHeaderBlock({{vector.name, vector.value}}, vector.version);
    EXPECT_EQ(toHex(encoded.octets), toHex(octets));
    const auto decoded = decodeHeaderBlock(octets.data(), octets.size());
    EXPECT_TRUE(decoded.problems.empty());
    if (decoded.fields.size() != 1) {
      ADD_FAILURE() << decoded.fields.size() << " fields";
      continue;
    }
    EXPECT_EQ(decoded.fields[0].name, vector.name);
    EXPECT_EQ(decoded.fields[0].value, vector.value);
  }
}

}  // namespace
}  // namespace mmsbrix::test
