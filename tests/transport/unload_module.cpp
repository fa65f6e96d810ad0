// A module with the library inside, as a plug-in of a host would have it.
#include <mmsbrix/transport/mmswap.h>
#include <mmsbrix/transport/push_listener.h>

namespace {

// There before the stack, so that they outlive it when the module is unloaded.
struct Objects {
  CMMSWap wap;
  mmsbrix::PushListener listener;
  ~Objects() { wap.DisconnectGtw(); }
} objects;

}  // namespace

extern "C" {

/// Opens a session and leaves it open; 1 when there is one.
__attribute__((visibility("default"))) int openSession(unsigned port) {
  return objects.wap.ConnectGtw("127.0.0.1", port, 0) ? 1 : 0;
}

/// Listens for pushes and goes on doing so; 1 when there is a port.
__attribute__((visibility("default"))) int startListening() {
  return objects.listener.Start("127.0.0.1", 0, [](const mmsbrix::Push&) {}) ? 1 : 0;
}
}
