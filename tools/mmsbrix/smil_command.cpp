#include "smil_command.h"

#include <mmsbrix/mms/mmscodec.h>
#include <mmsbrix/smil/parse_error.h>
#include <mmsbrix/smil/smilcodec.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <memory>
#include <ostream>

namespace mmsbrix::tool {

CLI::App* addSmil(CLI::App& app, SmilCommand& command) {
  CLI::App* smil = app.add_subcommand("smil", "Check and format presentations (SMIL)");
  smil->require_subcommand(1);
  CLI::App* check =
      smil->add_subcommand("check", "Say whether a file is SMIL, and what is wrong where");
  check->add_option("FILE", command.file, "SMIL file, - for standard input")->required();
  CLI::App* format = smil->add_subcommand("format", "Print a file in the layout that phones get");
  format->add_option("FILE", command.file, "SMIL file, - for standard input")->required();
  format->add_option("-o,--output", command.output, "Where it goes, - for standard output")
      ->type_name("FILE");
  format->callback([&command] { command.format = true; });
  return smil;
}

bool loadSmil(const std::string& file, std::istream& in, CSMIL& smil, std::string& error) {
  std::string told;
  setParseErrorHandler([&told](const std::string& caption, const std::string& reason) {
    if (told.empty()) told = caption + ": " + reason;
  });
  // Standard input goes by way of a file too: encodings are a matter of files.
  bool read = false;
  if (const auto text = readAll(file, in, error)) {
    const TemporaryFile copy(*text);
    read = MMS_LoadSmil(copy.path().c_str(), &smil, 0) == 1;
  }
  setParseErrorHandler({});
  if (read) return true;
  if (error.empty()) {
    while (!told.empty() && (told.back() == '\n' || told.back() == '\r')) told.pop_back();
    error = file + ": " + (told.empty() ? "the outermost element is not smil" : told);
  }
  return false;
}

int runSmil(const SmilCommand& command, const Streams& streams) {
  CSMIL smil;
  std::string error;
  if (!loadSmil(command.file, streams.in, smil, error)) {
    streams.err << "mmsbrix smil: " << printable(error) << '\n';
    return kFailed;
  }
  if (!command.format) {
    streams.out << printable(command.file) << ": good\n";
    return kDone;
  }
  unsigned char* buffer = nullptr;
  unsigned int length = 0;
  const int made = MMS_SaveSmilToMemory(&smil, &buffer, &length, 0);
  const std::unique_ptr<unsigned char, void (*)(void*)> owned(buffer, &MMS_Free);
  if (made != 1) {
    streams.err << "mmsbrix smil: there is not enough memory\n";
    return kFailed;
  }
  return writeOutput(command.output, {reinterpret_cast<char*>(buffer), length}, "smil", streams);
}

}  // namespace mmsbrix::tool
