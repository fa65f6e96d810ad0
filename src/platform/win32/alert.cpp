#include "platform/alert.h"

#include <windows.h>

#include "platform/win32/text.h"

namespace mmsbrix::platform {

void showAlert(const std::string& caption, const std::string& text) {
  ::MessageBoxA(nullptr, ansiFromUtf8(text).c_str(), ansiFromUtf8(caption).c_str(), MB_OK);
}

}  // namespace mmsbrix::platform
