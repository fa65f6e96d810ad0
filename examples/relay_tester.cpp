// Submits good and bad messages to a relay and prints what it makes of each.
#include <mmsbrix/mmsbrix.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using Octets = std::vector<unsigned char>;

// A text message to somebody.
CMMsg goodMessage() {
  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  message.SetTransactionId(mmsbrix::uniqueTransactionId().c_str());
  message.SetVersion("1.0");
  const CMMAddr to("+358401234567", CMMAddr::TYPE_PLMN);
  message.AddTo(&to);
  const CMMHdr type("Content-Type", "text/plain");
  message.Content()->Headers()->Add(&type);
  message.Content()->SetContent("Hello", -1);
  return message;
}

Octets encoded(CMMsg message) {
  void* data = nullptr;
  unsigned size = 0;
  MMS_SaveToMemory(&message, &data, &size, 0);
  const std::unique_ptr<void, void (*)(void*)> owner(data, &MMS_Free);
  const auto* octets = static_cast<const unsigned char*>(data);
  return {octets, octets + size};
}

struct Probe {
  const char* name;
  bool acceptable;
  std::function<Octets()> make;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return std::puts("usage: URL PROXY-HOST PROXY-PORT"), 2;
  const std::vector<Probe> probes = {
      {"a text", true, [] { return encoded(goodMessage()); }},
      {"a subject in UTF-8", true,
       [] {
         CMMsg message = goodMessage();
         const CMMString subject("\xE2\x82\xAC 5", "utf-8");
         message.SetSubject(&subject);
         return encoded(message);
       }},
      {"no recipient", false,
       [] {
         CMMsg message = goodMessage();
         message.GetTo()->Clear();
         return encoded(message);
       }},
      {"cut off in the header", false,
       [] {
         Octets octets = encoded(goodMessage());
         octets.resize(octets.size() / 2);
         return octets;
       }},
      {"another PDU", false,
       [] {
         return mmsbrix::encodePdu(
             mmsbrix::AcknowledgeInd{.transactionId = "T", .reportAllowed = {}});
       }},
  };
  CMMSHttp transport;
  transport.ConnectGtw(argv[2], static_cast<unsigned>(std::atoi(argv[3])), 0);
  int surprises = 0;
  for (const Probe& probe : probes) {
    const Octets octets = probe.make();
    const bool accepted = transport.SendPdu(argv[1], octets.data(), octets.size());
    char text[512] = "";
    const unsigned long code = transport.GetResult(text);
    std::printf("%-22s  %-8s  0x%02lX  %s %s\n", probe.name, accepted ? "accepted" : "refused",
                code, text, transport.GetFailureDetail());
    if (accepted != probe.acceptable) ++surprises;
  }
  transport.DisconnectGtw();
  std::printf("%d surprises\n", surprises);
  return surprises == 0 ? 0 : 1;
}
