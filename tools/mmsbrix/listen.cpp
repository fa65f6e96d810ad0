#include "listen.h"

#include <mmsbrix/mms/inspector.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <filesystem>
#include <mutex>
#include <ostream>

#include "host.h"
#include "show.h"
#include "trace_scope.h"

namespace mmsbrix::tool {
namespace {

/// Pushes come on a thread of the library's; they are counted and shown under the lock.
struct Arrivals {
  std::mutex mutex;
  unsigned count = 0;
  bool failed = false;
};

void showPush(const Push& push, std::ostream& out) {
  const std::string_view body(reinterpret_cast<const char*>(push.body.data()), push.body.size());
  out << "push from " << push.from << ", " << printable(push.contentType) << ", "
      << octetCount(push.body.size()) << '\n';
  for (const HeaderField& header : push.headers) {
    out << "  " << printable(printHeader(header)) << '\n';
  }
  if (push.notification != nullptr) {
    printInspection(inspect(push.body.data(), push.body.size()), body, false, out);
  }
  out << std::flush;
}

}  // namespace

CLI::App* addListen(CLI::App& app, ListenCommand& command) {
  CLI::App* listen =
      app.add_subcommand("listen", "Show the message notifications that a WAP gateway pushes");
  listen->footer(
      "Hears connectionless pushes (WAP-235) until it is interrupted.\n"
      "Examples:\n"
      "  mmsbrix listen\n"
      "  mmsbrix listen --count 1 --store notifications/");
  listen->add_option("--address", command.address, "Local IPv4 or IPv6 address to listen at")
      ->type_name("ADDRESS")
      ->capture_default_str();
  listen->add_option("--port", command.port, "UDP port; 0 takes a free one")
      ->capture_default_str()
      ->check(CLI::Range(0, 65535));
  listen->add_option("--count", command.count, "End after so many pushes");
  listen->add_option("--store", command.storeFolder, "Write the body of every push here")
      ->type_name("DIR")
      ->check(CLI::Validator(
          [](const std::string& folder) {
            std::error_code ignored;
            return std::filesystem::is_directory(host::pathOf(folder), ignored)
                       ? std::string()
                       : "no folder: " + folder;
          },
          ""));
  listen->add_flag("--trace", command.trace, "Print each datagram to standard error");
  return listen;
}

int runListen(const ListenCommand& command, const Streams& streams) {
  host::Interruption end;  // before the listener's thread, which inherits it
  const TraceScope trace(command.trace, streams.err);
  Arrivals arrivals;
  const auto arrived = [&](const Push& push) {
    const std::lock_guard lock(arrivals.mutex);
    if (command.count != 0 && arrivals.count >= command.count) return;
    showPush(push, streams.out);
    if (!command.storeFolder.empty()) {
      const std::string_view body(reinterpret_cast<const char*>(push.body.data()),
                                  push.body.size());
      const char* extension = push.notification != nullptr ? ".mms" : ".bin";
      const std::string path = writeNewFile(command.storeFolder, "push", extension, body);
      if (path.empty()) {
        streams.err << "mmsbrix listen: no file can be written in "
                    << printable(command.storeFolder) << '\n';
        arrivals.failed = true;
      } else {
        streams.out << "  stored as " << printable(path) << '\n' << std::flush;
      }
    }
    if (++arrivals.count == command.count) end.wake();
  };
  PushListener listener;
  if (!listener.Start(command.address.c_str(), command.port, arrived)) {
    streams.err << "mmsbrix listen: " << listener.GetFailureDetail() << '\n';
    return kFailed;
  }
  streams.err << "listening at " << command.address << ", UDP port " << listener.GetPort() << '\n'
              << std::flush;
  end.wait();
  listener.Stop();
  return arrivals.failed ? kFailed : kDone;
}

}  // namespace mmsbrix::tool
