// The monitor program of a desktop: a window titled "TMonitor" that writes what it is sent to a
// file.
//   trace_monitor FILE         until the window is told to close
#include <windows.h>

#include <fstream>

namespace {

std::ofstream lines;

LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wide, LPARAM number) {
  if (message == WM_COPYDATA) {
    const auto& data = *reinterpret_cast<const COPYDATASTRUCT*>(number);
    const auto* text = static_cast<const char*>(data.lpData);
    // Tag and length are told too: the length counts the terminating zero.
    lines << data.dwData << ' ' << (data.cbData > 0 && text[data.cbData - 1] == 0) << ' ';
    lines.write(text, data.cbData > 0 ? static_cast<std::streamsize>(data.cbData - 1) : 0);
    lines << '\n' << std::flush;
    return TRUE;
  }
  if (message == WM_DESTROY) ::PostQuitMessage(0);
  return ::DefWindowProcA(window, message, wide, number);
}

}  // namespace

int main(int, char** arguments) {
  lines.open(arguments[1], std::ios::binary);
  WNDCLASSA windowClass{};
  windowClass.lpfnWndProc = onMessage;
  windowClass.lpszClassName = "AnyClass";
  ::RegisterClassA(&windowClass);
  if (::CreateWindowA("AnyClass", "TMonitor", WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr,
                      nullptr, nullptr) == nullptr) {
    return 1;
  }
  MSG message{};
  while (::GetMessageA(&message, nullptr, 0, 0) > 0) ::DispatchMessageA(&message);
  return 0;
}
