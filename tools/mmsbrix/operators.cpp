#include "operators.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <iterator>
#include <ostream>

namespace mmsbrix::tool {
namespace {

// ASCII letters in lower case; names beyond ASCII are told apart by their octets.
std::string folded(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

int refuse(const Streams& streams, const char* verb, const std::string& why, int status = kFailed) {
  streams.err << "mmsbrix " << verb << ": " << printable(why) << '\n';
  return status;
}

void printProfile(const std::string& name, const Profile& profile, std::ostream& out) {
  out << '[' << printable(name) << "]\n";
  for (const auto& [key, member] : kProfileMembers) {
    const std::string& value = profile.*member;
    if (!value.empty()) {
      out << key << " = " << (key == "password" ? "(kept)" : printable(value)) << '\n';
    }
  }
}

bool isProfileName(const std::string& name) {
  return name.find_first_of("[]\r\n") == std::string::npos && name.front() != ' ';
}

// What is given on the command line, over what the profile has.  False when it is of no use.
bool change(const ConfigCommand& command, Profile& profile, std::string& error) {
  if (!command.operatorName.empty()) {
    const auto settings = operatorProfile(command.operatorName, command.database, error);
    if (!settings) return false;
    profile = *settings;
  }
  for (const auto& [key, member] : kProfileMembers) {
    const std::string& given = command.changes.*member;
    if (given.find_first_of("\r\n") != std::string::npos) {
      error = "--" + std::string(key) + ": has a line break";
      return false;
    }
    if (!given.empty()) profile.*member = given;
  }
  if (!command.credentialsFile.empty()) {
    const auto credentials = readCredentials(command.credentialsFile, error);
    if (!credentials) return false;
    profile.user = credentials->user;
    profile.password = credentials->password;
  }
  return true;
}

bool changesSomething(const ConfigCommand& command) {
  return !command.operatorName.empty() || !command.credentialsFile.empty() ||
         std::ranges::any_of(kProfileMembers,
                             [&](auto& row) { return !(command.changes.*row.second).empty(); });
}

}  // namespace

std::vector<OperatorSettings> findOperators(const std::vector<OperatorSettings>& all,
                                            std::string_view country, std::string_view name,
                                            std::string_view apn) {
  const std::string wantedCountry = folded(country);
  const std::string wantedName = folded(name);
  const std::string wantedApn = folded(apn);
  std::vector<OperatorSettings> exact;
  std::vector<OperatorSettings> partial;
  for (const OperatorSettings& one : all) {
    if (!wantedCountry.empty() && folded(one.country) != wantedCountry) continue;
    if (!wantedApn.empty() && folded(one.apn) != wantedApn) continue;
    const std::string candidate = folded(one.name);
    if (candidate == wantedName) exact.push_back(one);
    if (candidate.find(wantedName) != std::string::npos) partial.push_back(one);
  }
  return exact.empty() ? partial : exact;
}

CLI::App* addOperators(CLI::App& app, OperatorsCommand& command) {
  CLI::App* operators =
      app.add_subcommand("operators", "Look up how the relays of mobile operators are reached");
  operators->footer(
      "Examples:\n  mmsbrix operators fi\n  mmsbrix operators us t-mobile\n"
      "The data are those of the package mobile-broadband-provider-info.");
  operators->add_option("COUNTRY", command.country, "Two letters, such as fi");
  operators->add_option("NAME", command.name, "Name of the operator, or a part of it");
  operators->add_option("--database", command.database, "Another database")
      ->type_name("FILE")
      ->capture_default_str();
  return operators;
}

int runOperators(const OperatorsCommand& command, const Streams& streams) {
  std::string error;
  const auto all = loadOperators(command.database, error);
  if (!all) {
    return refuse(streams, "operators",
                  error + " (the package mobile-broadband-provider-info has the data)");
  }
  const auto found = findOperators(*all, command.country, command.name, {});
  if (found.empty()) return refuse(streams, "operators", "no operator fits");
  for (const OperatorSettings& one : found) {
    streams.out << printable(one.country) << '/' << printable(one.name) << '/' << printable(one.apn)
                << "\n  url   " << printable(one.url) << '\n';
    if (!one.proxyHost.empty()) {
      streams.out << "  proxy " << printable(one.proxyHost) << ':' << one.proxyPort << '\n';
    }
    if (!one.user.empty() || !one.password.empty()) {
      streams.out << "  user  " << printable(one.user) << ", password " << printable(one.password)
                  << '\n';
    }
  }
  return kDone;
}

CLI::App* addConfig(CLI::App& app, ConfigCommand& command) {
  CLI::App* config = app.add_subcommand(
      "config", "Keep settings of relays under names, for --profile of the other subcommands");
  config->footer(
      "Examples:\n"
      "  mmsbrix config                       # list the profiles\n"
      "  mmsbrix config default --operator fi/DNA\n"
      "  mmsbrix config work --url http://mmsc.example/mms --credentials secret.txt\n"
      "The profile named default is taken where no --url, --operator or --profile is given.");
  config->add_option("NAME", command.name, "The profile; all of them are listed without it");
  config->add_option("--url", command.changes.url, "The relay's URL")->type_name("URL");
  config->add_option("--proxy", command.changes.proxy, "HTTP proxy")->type_name("HOST[:PORT]");
  config->add_option("--user-agent", command.changes.userAgent, "User-Agent")->type_name("TEXT");
  config
      ->add_option("--profile-url", command.changes.profileUrl,
                   "Where the device's capabilities are described")
      ->type_name("URL");
  config->add_option("--ca", command.changes.ca, "Certificates to trust, PEM")->type_name("FILE");
  config
      ->add_option("--credentials", command.credentialsFile,
                   "Keep the user:password in the first line of this file")
      ->type_name("FILE");
  config->add_option("--operator", command.operatorName, "Begin with the settings of this operator")
      ->type_name("COUNTRY/NAME");
  config->add_option("--database", command.database, "Another database of operators")
      ->type_name("FILE")
      ->capture_default_str();
  config->add_flag("--remove", command.remove, "Remove the profile");
  return config;
}

int runConfig(const ConfigCommand& command, const Streams& streams) {
  std::string error;
  auto profiles = loadProfiles(error);
  if (!profiles) return refuse(streams, "config", error);
  if (command.name.empty()) {
    if (command.remove || changesSomething(command)) {
      return refuse(streams, "config", "which profile?", kWrongUsage);
    }
    streams.out << "# " << printable(profilesPath()) << '\n';
    for (const auto& [name, profile] : *profiles) printProfile(name, profile, streams.out);
    return kDone;
  }
  if (!isProfileName(command.name)) {
    return refuse(streams, "config", "no name for a profile: " + command.name, kWrongUsage);
  }
  const auto found = profiles->find(command.name);
  const bool changes = changesSomething(command);
  if (found == profiles->end() && (command.remove || !changes)) {
    return refuse(streams, "config", "there is no profile " + command.name);
  }
  if (command.remove) {
    profiles->erase(found);
  } else if (changes && !change(command, (*profiles)[command.name], error)) {
    return refuse(streams, "config", error);
  }
  if ((command.remove || changes) && !saveProfiles(*profiles, error)) {
    return refuse(streams, "config", error);
  }
  if (!command.remove) printProfile(command.name, (*profiles)[command.name], streams.out);
  return kDone;
}

}  // namespace mmsbrix::tool
