// Embedding: sends on a thread of its own, shows the progress, and cancels when the user presses
// Enter or when too much was sent.
#include <mmsbrix/mmsbrix.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

int main(int argc, char** argv) {
  if (argc != 6) {
    return std::puts("usage: MESSAGE URL PROXY-HOST PROXY-PORT MOST-OCTETS (0 for all)"), 2;
  }
  const unsigned long long most = std::strtoull(argv[5], nullptr, 10);
  std::atomic<bool> cancelled{false};
  std::atomic<bool> accepted{false};
  unsigned long code = 0;
  char text[512] = "";

  // The transport belongs to the thread that uses it; only `cancelled` is shared.
  std::thread sender([&] {
    CMMSHttp transport;
    transport.SetProgress([&](std::uint64_t sent, std::uint64_t total) {
      std::printf("%llu of %llu octets\n", static_cast<unsigned long long>(sent),
                  static_cast<unsigned long long>(total));
      if (most != 0 && sent >= most) cancelled = true;
      return !cancelled;
    });
    transport.ConnectGtw(argv[3], static_cast<unsigned>(std::atoi(argv[4])), 0);
    accepted = transport.SendMMS(argv[2], argv[1], 0);
    code = transport.GetResult(text);
    transport.DisconnectGtw();
  });
  if (most == 0) {
    std::puts("Enter cancels.");
    if (std::getchar() == '\n') cancelled = true;
  }
  sender.join();
  std::printf("%s, code %lu %s\n", accepted ? "accepted" : "not sent", code, text);
  return accepted ? 0 : 1;
}
