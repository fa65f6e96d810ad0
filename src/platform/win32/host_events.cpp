#include "platform/host_events.h"

#include <windows.h>

#include <optional>

namespace mmsbrix::platform {

// Messages are dispatched but not translated: keys belong to the host's own loop.
void dispatchHostEvents() {
  std::optional<int> quit;
  MSG message{};
  while (::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
    if (message.message == WM_QUIT) quit = static_cast<int>(message.wParam);
    ::DispatchMessageA(&message);
  }
  // The host's loop has to see it too.
  if (quit) ::PostQuitMessage(*quit);
}

}  // namespace mmsbrix::platform
