#include "wsp_headers.h"

#include <mmsbrix/model/mmpart.h>
#include <mmsbrix/wsp/header_block.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <filesystem>
#include <map>
#include <ostream>
#include <sstream>

#include "host.h"
#include "message_json.h"

namespace mmsbrix::tool {
namespace {

const std::map<std::string, EncodingVersion> kVersions = {{"1.1", EncodingVersion::v1_1},
                                                          {"1.2", EncodingVersion::v1_2},
                                                          {"1.3", EncodingVersion::v1_3},
                                                          {"1.4", EncodingVersion::v1_4},
                                                          {"1.5", EncodingVersion::v1_5}};

int digitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Octets of "83 81 EA" or "8381ea"; nothing for any other text.
std::optional<std::string> fromHex(std::string_view text) {
  std::string octets;
  int high = -1;
  for (const char c : text) {
    if (c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == ':') {
      if (high >= 0) return std::nullopt;
      continue;
    }
    const int digit = digitOf(c);
    if (digit < 0) return std::nullopt;
    if (high < 0) {
      high = digit;
    } else {
      octets += static_cast<char>(high * 16 + digit);
      high = -1;
    }
  }
  return high < 0 && !octets.empty() ? std::optional(octets) : std::nullopt;
}

std::string toHexText(const std::vector<std::uint8_t>& octets) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t octet : octets) {
    if (!text.empty()) text += ' ';
    text += kDigits[octet >> 4];
    text += kDigits[octet & 15];
  }
  return text;
}

int tellProblems(const std::vector<HeaderProblem>& problems, const char* what,
                 const Streams& streams) {
  for (const HeaderProblem& problem : problems) {
    streams.err << "mmsbrix wsp: " << what << ' ' << problem.position;
    if (!problem.name.empty()) streams.err << ", " << printable(problem.name);
    streams.err << ": " << printable(problem.reason) << '\n';
  }
  return problems.empty() ? kDone : kFailed;
}

// "Name: value", credentials masked unless they are asked for.
std::string lineOf(const HeaderField& field, bool secrets) {
  return secrets ? field.name + ": " + field.value : printHeader(field);
}

int decode(const WspCommand& command, const Streams& streams) {
  std::string error;
  std::error_code ignored;
  const bool isFile =
      command.input == "-" || std::filesystem::exists(host::pathOf(command.input), ignored);
  const auto octets = isFile ? readAll(command.input, streams.in, error) : fromHex(command.input);
  if (!octets) {
    streams.err << "mmsbrix wsp: "
                << (isFile ? error : printable(command.input) + ": neither a file nor hex octets")
                << '\n';
    return kFailed;
  }
  const DecodedHeaders decoded =
      decodeHeaderBlock(reinterpret_cast<const std::uint8_t*>(octets->data()), octets->size(),
                        command.split ? HeaderLists::split : HeaderLists::joined);
  if (command.json) {
    Json list = Json::array();
    for (const HeaderField& field : decoded.fields) {
      const std::string value = lineOf(field, command.secrets).substr(field.name.size() + 2);
      Json entry = {{"name", octetsJson(field.name)}, {"value", octetsJson(value)}};
      if (field.page != 1) entry["page"] = field.page;
      list.push_back(entry);
    }
    streams.out << list.dump(2) << '\n';
  } else {
    for (const HeaderField& field : decoded.fields) {
      if (field.page != 1) streams.out << "[page " << int{field.page} << "] ";
      streams.out << printable(lineOf(field, command.secrets)) << '\n';
    }
  }
  return tellProblems(decoded.problems, "offset", streams);
}

// "Name: value" on each line, with "[page N] " ahead of it for another code page than 1.
bool parseLine(std::string line, HeaderField& field) {
  if (line.ends_with('\r')) line.pop_back();
  if (line.starts_with("[page ")) {
    const std::size_t end = line.find("] ");
    int page = 0;
    for (std::size_t i = 6; i < end && i < line.size(); ++i) {
      const int digit = digitOf(line[i]);
      if (digit < 0 || digit > 9 || page > 25) return false;
      page = page * 10 + digit;
    }
    if (end == std::string::npos || page < 1 || page > 255) return false;
    field.page = static_cast<std::uint8_t>(page);
    line.erase(0, end + 2);
  }
  const std::size_t colon = line.find(':');
  if (colon == std::string::npos || colon == 0) return false;
  field.name = line.substr(0, colon);
  const std::size_t begin = line.find_first_not_of(" \t", colon + 1);
  field.value = begin == std::string::npos ? "" : line.substr(begin);
  return true;
}

int encode(const WspCommand& command, const Streams& streams) {
  std::string error;
  const auto text = readAll(command.input, streams.in, error);
  if (!text) {
    streams.err << "mmsbrix wsp: " << error << '\n';
    return kFailed;
  }
  std::vector<HeaderField> fields;
  std::istringstream lines(*text);
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    if (line.empty() || line == "\r") continue;
    HeaderField field;
    if (!parseLine(line, field)) {
      streams.err << "mmsbrix wsp: line " << number << ": not 'Name: value': " << printable(line)
                  << '\n';
      return kFailed;
    }
    fields.push_back(field);
  }
  const EncodedHeaders encoded = encodeHeaderBlock(fields, kVersions.at(command.version));
  const int result = tellProblems(encoded.problems, "header", streams);
  if (command.output.empty()) {
    streams.out << toHexText(encoded.octets) << '\n';
  } else if (command.output == "-") {
    streams.out.write(reinterpret_cast<const char*>(encoded.octets.data()),
                      static_cast<std::streamsize>(encoded.octets.size()));
  } else {
    CMMPart octets;
    octets.SetContent(encoded.octets.data(), static_cast<int>(encoded.octets.size()));
    if (encoded.octets.empty() || !octets.Save(command.output.c_str())) {
      streams.err << "mmsbrix wsp: " << printable(command.output) << ": cannot be written\n";
      return kFailed;
    }
  }
  return result;
}

}  // namespace

CLI::App* addWsp(CLI::App& app, WspCommand& command) {
  CLI::App* wsp = app.add_subcommand("wsp", "WSP header blocks: from octets to text and back");
  wsp->require_subcommand(1);
  wsp->footer(
      "Examples:\n"
      "  mmsbrix wsp decode '80 9E 83 99'\n"
      "  printf 'Accept: image/jpeg\\nAccept-Language: en\\n' | mmsbrix wsp encode -");
  CLI::App* decodeApp = wsp->add_subcommand("decode", "Print the headers in a block of octets");
  decodeApp->add_option("HEX|FILE", command.input, "Octets in hex, or a file with them, or -")
      ->required();
  decodeApp->add_flag("--json", command.json, "Print JSON");
  decodeApp->add_flag("--split", command.split, "Show list elements each as it travels");
  decodeApp->add_flag("--secrets", command.secrets, "Show credentials instead of masking them");
  CLI::App* encodeApp = wsp->add_subcommand("encode", "Encode lines of 'Name: value'");
  encodeApp->add_option("FILE", command.input, "The lines, - for standard input")->required();
  encodeApp
      ->add_option("-o,--output", command.output,
                   "Write the octets here (- for standard output) instead of printing hex")
      ->type_name("FILE");
  encodeApp->add_option("--encoding-version", command.version, "Newest codes that may be used")
      ->check(CLI::IsMember({"1.1", "1.2", "1.3", "1.4", "1.5"}))
      ->capture_default_str();
  encodeApp->callback([&command] { command.encode = true; });
  return wsp;
}

int runWsp(const WspCommand& command, const Streams& streams) {
  return command.encode ? encode(command, streams) : decode(command, streams);
}

}  // namespace mmsbrix::tool
