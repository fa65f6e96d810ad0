// The mmsbrix command-line tool: parses the arguments and calls the subcommand.
#include <mmsbrix/version.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "command.h"
#include "compose.h"
#include "demo.h"
#include "extract.h"
#include "fetch.h"
#include "host.h"
#include "listen.h"
#include "manual.h"
#include "operators.h"
#include "preview.h"
#include "relay.h"
#include "send.h"
#include "show.h"
#include "smil_command.h"
#include "wsp_headers.h"

namespace {

/// Help and version on request; else says what is wrong with the arguments, and whose help tells
/// more.
int endParsing(const CLI::App& app, const CLI::ParseError& error) {
  using namespace mmsbrix::tool;
  if (error.get_exit_code() == 0) return app.exit(error);
  std::string name = app.get_name();
  for (auto chosen = app.get_subcommands(); !chosen.empty();
       chosen = chosen.front()->get_subcommands()) {
    name += " " + chosen.front()->get_name();
  }
  const bool unknown = app.get_subcommands().empty() && app.remaining_size() > 0;
  std::cerr << name << ": "
            << (unknown ? "there is no " + printable(app.remaining().front())
                        : printable(error.what()))
            << "\nTry '" << name << " --help'.\n";
  return kWrongUsage;
}

int run(const std::vector<std::string>& arguments) {
  using namespace mmsbrix::tool;
  CLI::App app("Compose, show, submit and receive multimedia messages (MMS)", "mmsbrix");
  app.set_version_flag("--version", std::string("mmsbrix ") + mmsbrix::version());
  app.require_subcommand(1);
  app.footer(
      "Exit status: 0 done, 1 refused or failed, 2 wrong usage.\n"
      "Try 'mmsbrix SUBCOMMAND --help', or 'mmsbrix demo' to see it all at work.");
  ComposeCommand compose;
  ShowCommand show;
  SendCommand send;
  FetchCommand fetch;
  ReportCommand report;
  OperatorsCommand operators;
  ConfigCommand config;
  ManualCommand manual;
  ListenCommand listen;
  RelayCommand relay;
  DemoCommand demo;
  WspCommand wsp;
  ExtractCommand extract;
  SmilCommand smil;
  PreviewCommand preview;
  CLI::App* composeApp = addCompose(app, compose);
  CLI::App* showApp = addShow(app, show);
  CLI::App* extractApp = addExtract(app, extract);
  CLI::App* previewApp = addPreview(app, preview);
  CLI::App* smilApp = addSmil(app, smil);
  CLI::App* sendApp = addSend(app, send);
  CLI::App* fetchApp = addFetch(app, fetch);
  CLI::App* reportApp = addReport(app, report);
  CLI::App* listenApp = addListen(app, listen);
  CLI::App* relayApp = addRelay(app, relay);
  CLI::App* operatorsApp = addOperators(app, operators);
  CLI::App* configApp = addConfig(app, config);
  CLI::App* demoApp = addDemo(app, demo);
  CLI::App* wspApp = addWsp(app, wsp);
  CLI::App* manualApp = addManual(app, manual);
  std::vector<const char*> texts;
  texts.reserve(arguments.size());
  for (const std::string& argument : arguments) texts.push_back(argument.c_str());
  try {
    app.parse(static_cast<int>(texts.size()), texts.data());
  } catch (const CLI::ParseError& error) {
    return endParsing(app, error);
  }
  const Streams streams{std::cin, std::cout, std::cerr};
  int result = kWrongUsage;
  if (composeApp->parsed()) result = runCompose(compose, streams);
  if (showApp->parsed()) result = runShow(show, streams);
  send.showProgress = fetch.showProgress = host::standardErrorIsTerminal();
  if (sendApp->parsed()) result = runSend(send, streams);
  if (fetchApp->parsed()) result = runFetch(fetch, streams);
  if (reportApp->parsed()) result = runReport(report, streams);
  if (listenApp->parsed()) result = runListen(listen, streams);
  if (relayApp->parsed()) result = runRelay(relay, std::cout, std::cerr);
  if (extractApp->parsed()) result = runExtract(extract, streams);
  if (previewApp->parsed()) result = runPreview(preview, streams);
  if (smilApp->parsed()) result = runSmil(smil, streams);
  if (operatorsApp->parsed()) result = runOperators(operators, streams);
  if (configApp->parsed()) result = runConfig(config, streams);
  if (manualApp->parsed()) result = runManual(app, manual, streams);
  if (wspApp->parsed()) result = runWsp(wsp, streams);
  if (demoApp->parsed()) result = runDemo(demo, streams);
  std::cout.flush();
  if (!std::cout && result == kDone) {
    std::cerr << "mmsbrix: standard output cannot be written\n";
    result = kFailed;
  }
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  const mmsbrix::tool::host::Process process;
  std::ios::sync_with_stdio(false);
  try {
    return run(mmsbrix::tool::host::arguments(argc, argv));
  } catch (const std::exception& error) {
    std::cerr << "mmsbrix: " << error.what() << '\n';
    return mmsbrix::tool::kFailed;
  }
}
