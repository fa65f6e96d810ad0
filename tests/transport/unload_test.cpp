// Unloading the library while its protocol thread runs.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <memory>
#include <string>

#include "transport/wap_gateway.h"

namespace mmsbrix::test {
namespace {

std::ptrdiff_t threads() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

TEST(WapStackUnload, EndsItsThreadAndLeavesNothing) {
  std::string error;
  const auto gateway = WapGateway::start({}, error);
  ASSERT_TRUE(gateway) << error;
  const auto before = threads();
  for (int round = 0; round < 3; ++round) {
    void* module = ::dlopen(MMSBRIX_UNLOAD_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << ::dlerror();
    const auto connect = reinterpret_cast<int (*)(unsigned)>(::dlsym(module, "openSession"));
    const auto listen = reinterpret_cast<int (*)()>(::dlsym(module, "startListening"));
    ASSERT_NE(connect, nullptr);
    ASSERT_NE(listen, nullptr);
    EXPECT_EQ(connect(gateway->port()), 1);
    EXPECT_EQ(listen(), 1);
    EXPECT_EQ(threads(), before + 1);
    ::dlclose(module);
    EXPECT_EQ(::dlopen(MMSBRIX_UNLOAD_MODULE, RTLD_NOW | RTLD_NOLOAD), nullptr)
        << "the module is still there";
    EXPECT_EQ(threads(), before);
  }
}

}  // namespace
}  // namespace mmsbrix::test
