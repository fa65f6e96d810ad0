// The DLL as other modules of a suite see it: loaded at run time, called by name, unloaded.
#include <gtest/gtest.h>
#include <windows.h>
// Above the rest that needs it.
#include <tlhelp32.h>

#include <string>
#include <vector>

#include "mms/mmscodec.h"
#include "model/mmsg.h"
#include "smil/smil.h"
#include "support/temporary_folder.h"
#include "transport/wap_gateway.h"

namespace mmsbrix::test {
namespace {

class Module {
 public:
  explicit Module(const char* path) : handle_(::LoadLibraryA(path)) {}
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  ~Module() {
    if (handle_ != nullptr) ::FreeLibrary(handle_);
  }

  [[nodiscard]] HMODULE get() const noexcept { return handle_; }
  template <class Function>
  Function* find(const char* name) const {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void (*)()>(::GetProcAddress(handle_, name)));
  }

 private:
  const HMODULE handle_;
};

int threads() {
  const HANDLE all = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  int count = 0;
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = ::Thread32First(all, &entry); more != FALSE;
       more = ::Thread32Next(all, &entry)) {
    if (entry.th32OwnerProcessID == ::GetCurrentProcessId()) ++count;
  }
  ::CloseHandle(all);
  return count;
}

TEST(LoadedLibrary, FunctionsAreFoundByTheirPlainNames) {
  const Module library(MMSBRIX_LIBRARY);
  ASSERT_NE(library.get(), nullptr);
  auto* const save = library.find<decltype(MMS_SaveToMemory)>("MMS_SaveToMemory");
  auto* const load = library.find<decltype(MMS_LoadFromMemory)>("MMS_LoadFromMemory");
  auto* const release = library.find<decltype(MMS_Free)>("MMS_Free");
  ASSERT_TRUE(save != nullptr && load != nullptr && release != nullptr);
  for (const char* name :
       {"MMS_Save", "MMS_Load", "MMS_LoadSmil", "MMS_LoadSmilFromMemory", "MMS_SaveSmil",
        "MMS_SaveSmilToMemory", "MMS_MMSToSmil", "MMS_SmilToMMS"}) {
    EXPECT_NE(::GetProcAddress(library.get(), name), nullptr) << name;
  }
  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  message.SetTransactionId("by-name");
  void* data = nullptr;
  unsigned size = 0;
  ASSERT_EQ(save(&message, &data, &size, 0), 1);
  CMMsg read;
  EXPECT_EQ(load(data, size, &read, 0), 1);
  EXPECT_STREQ(read.GetTransactionId(), "by-name");
  release(data);
}

TEST(LoadedLibrary, HasItsTextAndItsVersion) {
  const Module library(MMSBRIX_LIBRARY);
  char text[512] = {};
  ::LoadStringA(library.get(), 214, text, sizeof text);
  EXPECT_STREQ(text, "Failed to connect to the gateway\n\nCheck setup.");
  std::vector<char> info(::GetFileVersionInfoSizeA(MMSBRIX_LIBRARY, nullptr));
  ASSERT_NE(::GetFileVersionInfoA(MMSBRIX_LIBRARY, 0, static_cast<DWORD>(info.size()), info.data()),
            FALSE);
  void* value = nullptr;
  UINT length = 0;
  ASSERT_NE(::VerQueryValueA(info.data(), "\\StringFileInfo\\040904B0\\OriginalFilename", &value,
                             &length),
            FALSE);
  EXPECT_STREQ(static_cast<const char*>(value), "Mmsbrix.dll");
}

TEST(LoadedLibrary, UnloadedWithAnOpenSessionLeavesNothing) {
  std::string error;
  const auto gateway = WapGateway::start({}, error);
  ASSERT_TRUE(gateway) << error;
  int before = 0;
  for (int round = 0; round < 3; ++round) {
    const int unloaded = threads();
    {
      const Module module(MMSBRIX_WAP_MODULE);
      ASSERT_NE(module.get(), nullptr);
      auto* const openSession = module.find<int(unsigned)>("openSession");
      auto* const startListening = module.find<int()>("startListening");
      ASSERT_TRUE(openSession != nullptr && startListening != nullptr);
      EXPECT_EQ(openSession(gateway->port()), 1);
      EXPECT_EQ(startListening(), 1);
      EXPECT_GT(threads(), unloaded);
      EXPECT_NE(::GetModuleHandleA("Mmsbrix.dll"), nullptr);
    }
    EXPECT_EQ(::GetModuleHandleA("Mmsbrix.dll"), nullptr) << "the library is still there";
    // The system's own modules may keep a thread that they have begun.
    if (round > 0) {
      EXPECT_EQ(threads(), before);
    }
    before = threads();
  }
}

TEST(TraceMonitor, WindowOfAnotherProcessReceivesTheLines) {
  const TemporaryFolder folder;
  const std::string file = folder.path("lines");
  std::string command = std::string("\"") + MMSBRIX_TRACE_MONITOR + "\" \"" + file + "\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  ASSERT_NE(::CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             &startup, &process),
            FALSE);
  HWND window = nullptr;
  for (int wait = 0; wait < 500 && window == nullptr; ++wait) {
    ::Sleep(20);
    window = ::FindWindowA(nullptr, "TMonitor");
  }
  ASSERT_NE(window, nullptr);
  {
    const Module module(MMSBRIX_WAP_MODULE);  // its transport looks the window up
    ASSERT_NE(module.get(), nullptr);
    std::string error;
    const auto gateway = WapGateway::start({}, error);
    EXPECT_EQ(module.find<int(unsigned)>("openSession")(gateway->port()), 1);
  }
  ::PostMessageA(window, WM_CLOSE, 0, 0);
  EXPECT_EQ(::WaitForSingleObject(process.hProcess, 10000), WAIT_OBJECT_0);
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);
  const std::string lines = folder.get("lines");
  EXPECT_NE(lines.find("0 1 WAP Gateway Address = 127.0.0.1, Port = "), std::string::npos) << lines;
  EXPECT_NE(lines.find("0 1 WspClient Connecting...\n"), std::string::npos) << lines;
  EXPECT_NE(lines.find("\n0 1 --> "), std::string::npos) << lines;
  EXPECT_NE(lines.find("\n0 1 s_Connect_cnf\n"), std::string::npos) << lines;
}

}  // namespace
}  // namespace mmsbrix::test
