// A long run: composes messages, sends them to a relay, decodes what arrived there and extracts it,
// again and again, and prints how much memory the process takes.  The curve has to be flat.
//   soak [messages]   (default 100000)
#include <mmsbrix/convert/extraction.h>
#include <mmsbrix/mms/mmscodec.h>
#include <mmsbrix/transport/mmshttp.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <string>

#include "relay_server.h"
#include "support/temporary_folder.h"

namespace {

using namespace mmsbrix;

/// What may come on top between the first fifth of a run and its end: the heap settles.
constexpr long kAllowedKibibytes = 2048;

long residentKibibytes() {
  std::ifstream pages("/proc/self/statm");
  long total = 0;
  long resident = 0;
  pages >> total >> resident;
  return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

void compose(CMMsg& message, int number) {
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  message.SetTransactionId(("T" + std::to_string(number)).c_str());
  message.SetVersion("1.2");
  const CMMAddr to("+358401234567", CMMAddr::TYPE_PLMN);
  message.AddTo(&to);
  const CMMString subject("Soak \xC3\xA4", "utf-8");
  message.SetSubject(&subject);
  CMMHdr type("Content-Type", "application/vnd.wap.multipart.mixed");
  message.Content()->Headers()->Add(&type);
  for (int part = 0; part < 3; ++part) {
    CMMPart* child = message.Content()->NewChild();
    CMMHdr partType("Content-Type", part == 0 ? "text/plain" : "image/jpeg");
    child->Headers()->Add(&partType);
    // Sizes differ from message to message, so that the heap has something to do.
    const std::string content(static_cast<std::size_t>(1 + (number * 37 + part * 911) % 20000),
                              'c');
    child->SetContent(content.data(), static_cast<int>(content.size()));
  }
}

int fail(int number, const char* step) {
  std::fprintf(stderr, "message %d: %s failed\n", number, step);
  return 1;
}

}  // namespace

int main(int count, char** arguments) {
  const int messages = count > 1 ? std::atoi(arguments[1]) : 100000;
  if (messages < 100) return 2;
  const test::TemporaryFolder folder;
  std::mutex mutex;
  std::vector<std::uint8_t> arrived;
  std::string error;
  tool::RelayOptions options;
  options.keptExchanges = 1;
  options.onExchange = [&](const tool::RelayExchange& exchange) {
    const std::lock_guard lock(mutex);
    arrived = exchange.pdu;
  };
  const auto relay = tool::RelayServer::start(std::move(options), error);
  if (!relay) return fail(0, error.c_str());
  const std::string url = "http://" + relay->address() + "/";
  const std::string file = folder.path("m.mms");
  CMMSHttp http;
  http.ConnectGtw(nullptr, 0, 0);
  long settled = 0;
  const auto begun = std::chrono::steady_clock::now();
  for (int number = 1; number <= messages; ++number) {
    CMMsg message;
    compose(message, number);
    if (MMS_Save(&message, file.c_str(), 0) == 0) return fail(number, "saving");
    if (!http.SendMMS(url.c_str(), file.c_str(), 0)) return fail(number, "sending");
    // The relay tells of an exchange when its answer is out, maybe after we have read it.
    CMMsg back;
    const std::string id = "T" + std::to_string(number);
    for (int tries = 0; tries < 5000; ++tries) {
      {
        const std::lock_guard lock(mutex);
        MMS_LoadFromMemory(arrived.data(), static_cast<unsigned>(arrived.size()), &back, 0);
      }
      if (back.GetTransactionId() != nullptr && back.GetTransactionId() == id) break;
      ::usleep(1000);
    }
    if (back.GetTransactionId() == nullptr || back.GetTransactionId() != id) {
      return fail(number, "arriving");
    }
    for (const ExtractedPart& part : extractParts(back, folder.path())) {
      if (part.error != 0 || std::remove(part.path.c_str()) != 0) return fail(number, "extracting");
    }
    if (number % (messages / 10) != 0) continue;
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begun;
    std::printf("%7d messages  %7ld KiB resident  %6.1f s\n", number, residentKibibytes(),
                time.count());
    std::fflush(stdout);
    if (number <= messages / 5) settled = residentKibibytes();
  }
  http.DisconnectGtw();
  const long grown = residentKibibytes() - settled;
  std::printf("%ld KiB more than after the first fifth\n", grown);
  return grown <= kAllowedKibibytes ? 0 : 1;
}
