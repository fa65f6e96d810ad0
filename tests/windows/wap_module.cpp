// A module of somebody else's that brings the library with it.
#include <mmsbrix/transport/mmswap.h>
#include <mmsbrix/transport/push_listener.h>

namespace {

// There until the module is unloaded, so that session and listener are left open.
struct Objects {
  CMMSWap wap;
  mmsbrix::PushListener listener;
} objects;

}  // namespace

extern "C" {

/// Opens a session and leaves it open; 1 when there is one.
__declspec(dllexport) int openSession(unsigned port) {
  return objects.wap.ConnectGtw("127.0.0.1", port, 0) ? 1 : 0;
}

/// Listens for pushes and goes on doing so; 1 when there is a port.
__declspec(dllexport) int startListening() {
  return objects.listener.Start("127.0.0.1", 0, [](const mmsbrix::Push&) {}) ? 1 : 0;
}
}
