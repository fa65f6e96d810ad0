// Submits a message file through a WAP gateway and says which layer it ended in.
//   submit_by_wap GATEWAY PORT URL FILE
#include <mmsbrix/mmsbrix.h>

#include <chrono>
#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) {
  if (argc != 5) {
    std::cerr << "usage: submit_by_wap GATEWAY PORT URL FILE\n";
    return 2;
  }
  // Each step and each datagram.
  mmsbrix::setTraceSink([](std::string_view line) { std::clog << line << '\n'; });

  CMMSWap wap;
  wap.SetTiming({.retryInterval = std::chrono::seconds(2), .maxRetries = 3});
  char text[512] = "";
  bool accepted = wap.ConnectGtw(argv[1], static_cast<unsigned>(std::atoi(argv[2])), 0);
  accepted = accepted && wap.SendMMS(argv[3], argv[4], 0);
  const unsigned long code = wap.GetResult(text);
  switch (wap.GetOutcome()) {
    case CMMSWap::Outcome::accepted:
      std::cout << "accepted by the relay: " << text << '\n';
      break;
    case CMMSWap::Outcome::relayStatus:
      std::cout << "refused by the relay: " << code << ' ' << text << '\n';
      break;
    case CMMSWap::Outcome::gatewayStatus:
    case CMMSWap::Outcome::refused:
      std::cout << "refused by the gateway: " << wap.GetFailureDetail() << '\n';
      break;
    default:
      std::cout << "not submitted: " << wap.GetFailureDetail() << '\n';
  }
  wap.DisconnectGtw();  // whatever came before
  return accepted ? 0 : 1;
}
