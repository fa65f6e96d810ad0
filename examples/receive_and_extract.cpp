// Fetches the message that a notification announces, saves its parts as files, and tells the relay.
#include <mmsbrix/mmsbrix.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

int main(int argc, char** argv) {
  if (argc != 5) return std::puts("usage: NOTIFICATION FOLDER PROXY-HOST PROXY-PORT"), 2;
  std::ifstream file(argv[1], std::ios::binary);
  const std::string pushed{std::istreambuf_iterator<char>(file), {}};
  const auto notification = mmsbrix::readNotification(pushed.data(), pushed.size());
  if (!notification) return std::puts("this is no notification"), 1;

  CMMSHttp transport;
  transport.ConnectGtw(argv[3], static_cast<unsigned>(std::atoi(argv[4])), 0);
  std::vector<std::uint8_t> pdu;
  int result = 1;
  if (transport.FetchMMS(notification->contentLocation.c_str(), pdu)) {
    CMMsg message;
    MMS_LoadFromMemory(pdu.data(), static_cast<unsigned>(pdu.size()), &message, 0);
    result = 0;
    for (const mmsbrix::ExtractedPart& part : mmsbrix::extractParts(message, argv[2])) {
      std::printf("%s  %s  %zu octets\n", part.path.c_str(), part.mediaType.c_str(), part.octets);
      if (part.error != 0) result = 1;
    }
    // Only now: a message that was acknowledged is gone from the relay.
    mmsbrix::NotifyRespInd answer;
    answer.transactionId = notification->transactionId;
    answer.version = notification->version;
    const auto octets = mmsbrix::encodePdu(answer);
    if (result == 0) {
      transport.PostReport(notification->contentLocation.c_str(), octets.data(), octets.size());
    }
  }
  char text[512] = "";
  std::printf("result 0x%02lX %s\n", transport.GetResult(text), text);
  transport.DisconnectGtw();
  return result;
}
