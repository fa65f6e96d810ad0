#include "platform/trace_monitor.h"

#include <windows.h>

namespace mmsbrix::platform {
namespace {

constexpr char kTitle[] = "TMonitor";
constexpr ULONG_PTR kLineTag = 0;

HWND monitor = nullptr;

}  // namespace

bool findTraceMonitor() {
  monitor = ::FindWindowA(nullptr, kTitle);
  return monitor != nullptr;
}

void sendToTraceMonitor(const std::string& line) {
  if (monitor == nullptr) return;
  COPYDATASTRUCT data{};
  data.dwData = kLineTag;
  data.cbData = static_cast<DWORD>(line.size() + 1);
  data.lpData = const_cast<char*>(line.c_str());  // the receiver gets a copy
  ::SendMessageA(monitor, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data));
}

}  // namespace mmsbrix::platform
