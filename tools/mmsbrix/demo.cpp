#include "demo.h"

#include <mmsbrix/mms/inspector.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <random>
#include <string_view>

#include "compose.h"
#include "extract.h"
#include "host.h"
#include "preview.h"
#include "relay_http.h"
#include "relay_server.h"
#include "sample_media.h"
#include "send.h"
#include "show.h"

namespace mmsbrix::tool {
namespace {

namespace fs = std::filesystem;

// The folder of the demo: the one asked for, or a temporary one that goes away.
class DemoFolder {
 public:
  explicit DemoFolder(const std::string& wanted)
      : temporary_(wanted.empty()), path_(host::pathOf(wanted)) {
    std::error_code error;
    if (temporary_) {
      path_ = fs::temp_directory_path(error) /
              ("mmsbrix-demo-" + std::to_string(std::random_device()()));
    }
    fs::create_directories(path_, error);
    usable_ = !error && fs::is_directory(path_, error);
  }
  DemoFolder(const DemoFolder&) = delete;
  DemoFolder& operator=(const DemoFolder&) = delete;
  ~DemoFolder() {
    std::error_code ignored;
    if (temporary_) fs::remove_all(path_, ignored);
  }
  [[nodiscard]] bool usable() const noexcept { return usable_; }
  [[nodiscard]] std::string file(std::string_view name) const {
    return host::textOf(path_ / host::pathOf(name));
  }

 private:
  bool temporary_;
  bool usable_ = false;
  fs::path path_;
};

void heading(const Streams& streams, const std::string& text) {
  streams.out << "\n== " << text << '\n';
}

bool writeMedia(const DemoFolder& folder) {
  for (const SampleMedia& media : sampleMedia()) {
    std::ofstream out(host::pathOf(folder.file(media.name)), std::ios::binary);
    out.write(reinterpret_cast<const char*>(media.octets.data()),
              static_cast<std::streamsize>(media.octets.size()));
    if (!out.flush()) return false;
  }
  return true;
}

// The extracted picture and sound hold the octets of the samples.
bool sameMedia(const DemoFolder& folder) {
  for (const SampleMedia& media : sampleMedia()) {
    if (media.name.ends_with(".txt")) continue;
    const std::string name =
        "extracted/MMSContent" + std::string(media.name.substr(media.name.rfind('.')));
    std::ifstream in(host::pathOf(folder.file(name)), std::ios::binary);
    const std::string got{std::istreambuf_iterator<char>(in), {}};
    if (!std::ranges::equal(got, media.octets, [](char c, std::uint8_t octet) {
          return static_cast<std::uint8_t>(c) == octet;
        })) {
      return false;
    }
  }
  return true;
}

ComposeCommand composeCommand(const DemoFolder& folder) {
  ComposeCommand command;
  command.output = folder.file("message.mms");
  command.to = {"+358 40 987 6543", "ann@example.com"};
  command.from = "+358401234567";
  command.subject = "A photo and a chime \xE2\x99\xAA";
  command.hasSubject = true;
  command.expiry = "2d";
  command.priority = "normal";
  command.deliveryReport = "yes";
  command.slides = {
      "text=Hei from Mmsbrix \xF0\x9F\x98\x80,image=" + folder.file("photo.jpg") + ",dur=4s",
      "text=And a chime.,audio=" + folder.file("chime.amr") + ",dur=2s"};
  return command;
}

}  // namespace

CLI::App* addDemo(CLI::App& app, DemoCommand& command) {
  CLI::App* demo = app.add_subcommand(
      "demo", "Compose a message, submit it through a relay of its own, and show what arrived");
  demo->add_option("--keep", command.keep, "Keep the files in this folder")->type_name("DIR");
  demo->add_flag("--wap", command.wap,
                 "Submit it through a WAP gateway (WSP over UDP) instead of an HTTP proxy");
  demo->footer(
      "Examples:\n"
      "  mmsbrix demo\n"
      "  mmsbrix demo --wap --keep demo-files");
  return demo;
}

int runDemo(const DemoCommand& command, const Streams& streams) {
  if (!command.wap && !RelayHttpSide::isThere()) {
    streams.err << "mmsbrix demo: " << kNoHttpRelay << '\n';
    return kWrongUsage;
  }
  const DemoFolder folder(command.keep);
  if (!folder.usable() || !writeMedia(folder)) {
    streams.err << "mmsbrix demo: the files cannot be written\n";
    return kFailed;
  }
  heading(streams, "compose two slides from texts, a picture and a sound");
  const ComposeCommand compose = composeCommand(folder);
  if (const int failed = runCompose(compose, streams); failed != kDone) return failed;
  if (runShow({{compose.output}, false, false}, streams) != kDone) return kFailed;

  heading(streams, command.wap ? "submit it to a relay, through the relay as WAP gateway"
                               : "submit it to a relay, through the relay as HTTP proxy");
  RelayOptions options;
  options.http = !command.wap;
  if (command.wap) options.wap.emplace();
  options.storeDirectory = folder.file("stored");
  std::error_code ignored;
  fs::create_directories(host::pathOf(options.storeDirectory), ignored);
  std::string error;
  const auto relay = RelayServer::start(options, error);
  if (relay == nullptr) {
    streams.err << "mmsbrix demo: " << error << '\n';
    return kFailed;
  }
  SendCommand send;
  send.file = compose.output;
  send.url = "http://mmsc.example/mms";
  (command.wap ? send.wap : send.proxy) = command.wap ? relay->wapAddress() : relay->address();
  send.trace = true;
  const Streams talk{streams.in, streams.out, streams.out};  // the trace is part of the show
  if (runSend(send, talk) != kDone) return kFailed;

  heading(streams, "what the relay got");
  const auto exchanges = relay->exchanges();
  if (exchanges.empty()) return kFailed;
  const RelayExchange& exchange = exchanges.back();
  streams.out << describe(exchange) << '\n';
  const std::string sent = *readAll(compose.output, streams.in, error);
  const auto stored = readAll(exchange.file, streams.in, error);
  if (!stored || *stored != sent) {
    streams.err << "mmsbrix demo: the relay stored something else than was sent\n";
    return kFailed;
  }
  streams.out << "stored: the same " << octetCount(stored->size()) << " that were composed\n";

  heading(streams, "read it back: extracted, and as a page for a browser");
  ExtractCommand extract;
  extract.file = exchange.file;
  extract.folder = folder.file("extracted");
  if (runExtract(extract, streams) != kDone) return kFailed;
  if (!sameMedia(folder)) {
    streams.err << "mmsbrix demo: what was extracted is not what was sent\n";
    return kFailed;
  }
  streams.out << "extracted: the same picture and sound that were sent\n";
  const PreviewCommand preview{exchange.file, folder.file("page.html")};
  if (runPreview(preview, streams) != kDone) return kFailed;
  if (!command.keep.empty()) {
    streams.out << preview.output << "  the page\n";
  } else {
    streams.out << "and a page of " << fs::file_size(host::pathOf(preview.output), ignored)
                << " octets (--keep DIR keeps all of this)\n";
  }
  if (!command.keep.empty()) streams.out << "files kept in " << command.keep << '\n';
  return kDone;
}

}  // namespace mmsbrix::tool
