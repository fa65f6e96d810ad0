#include "profiles.h"

#include <mmsbrix/transport/operators.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

#include "host.h"
#include "operators.h"

namespace mmsbrix::tool {
namespace fs = std::filesystem;
namespace {

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r"), text.size()));
  return text.substr(0, text.find_last_not_of(" \t\r") + 1);
}

bool sameSettings(const OperatorSettings& a, const OperatorSettings& b) {
  return a.url == b.url && a.proxyHost == b.proxyHost && a.proxyPort == b.proxyPort &&
         a.user == b.user && a.password == b.password;
}

}  // namespace

std::string profilesPath() {
  const std::string folder = host::settingsFolder();
  return folder.empty() ? "" : folder + "/mmsbrix/profiles";
}

std::optional<Profiles> loadProfiles(std::string& error) {
  const std::string path = profilesPath();
  std::error_code failure;
  if (path.empty() || !fs::exists(host::pathOf(path), failure)) return Profiles();
  host::closeToOthers(path);
  std::ifstream file(host::pathOf(path), std::ios::binary);
  if (!file) {
    error = path + ": cannot be read";
    return std::nullopt;
  }
  Profiles profiles;
  Profile* current = nullptr;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    const std::string_view text = trimmed(line);
    if (text.empty() || text.front() == '#') continue;
    if (text.front() == '[' && text.back() == ']') {
      current = &profiles[std::string(text.substr(1, text.size() - 2))];
      continue;
    }
    const std::size_t equals = std::min(text.find('='), text.size());
    const auto member = std::ranges::find(kProfileMembers, trimmed(text.substr(0, equals)),
                                          &decltype(kProfileMembers)::value_type::first);
    if (current == nullptr || member == kProfileMembers.end()) {
      error = path + ": line " + std::to_string(number) + " is no setting of a profile";
      return std::nullopt;
    }
    current->*member->second = trimmed(text.substr(std::min(equals + 1, text.size())));
  }
  return profiles;
}

bool saveProfiles(const Profiles& profiles, std::string& error) {
  const std::string path = profilesPath();
  if (path.empty()) {
    error = "there is no place for the configuration: HOME is not set";
    return false;
  }
  std::error_code failure;
  const fs::path folder = host::pathOf(path).parent_path();
  if (fs::create_directories(folder, failure)) host::closeToOthers(host::textOf(folder));
  std::string content = "# Profiles of mmsbrix; 'mmsbrix config' changes them.\n";
  for (const auto& [name, profile] : profiles) {
    content += "\n[" + name + "]\n";
    for (const auto& [key, member] : kProfileMembers) {
      if (!(profile.*member).empty()) content += std::string(key) + " = " + profile.*member + "\n";
    }
  }
  // Closed to others before the first octet is in it, and in its place when all of them are.
  const std::string fresh = path + ".new";
  fs::remove(host::pathOf(fresh), failure);
  if (host::writeNewFile(fresh, content, host::Readers::ownerOnly) == host::NewFile::written) {
    fs::rename(host::pathOf(fresh), host::pathOf(path), failure);
    if (!failure) return true;
    fs::remove(host::pathOf(fresh), failure);
  }
  error = path + ": cannot be written";
  return false;
}

std::optional<Profile> operatorProfile(std::string_view name, const std::string& database,
                                       std::string& error) {
  const auto all = loadOperators(database, error);
  if (!all) return std::nullopt;
  const std::size_t slash = std::min(name.find('/'), name.size());
  const std::string_view country = name.substr(0, slash);
  std::string_view wanted = name.substr(std::min(slash + 1, name.size()));
  // An operator's own name may have a slash in it, so the access point is what follows the last.
  std::vector<OperatorSettings> found = findOperators(*all, country, wanted, {});
  if (const std::size_t last = wanted.rfind('/'); found.empty() && last != std::string_view::npos) {
    found = findOperators(*all, country, wanted.substr(0, last), wanted.substr(last + 1));
  }
  if (found.empty()) {
    error = "no operator " + std::string(name) + " ('mmsbrix operators' lists them)";
    return std::nullopt;
  }
  const auto other = std::ranges::find_if(
      found, [&](const OperatorSettings& one) { return !sameSettings(one, found.front()); });
  if (other != found.end()) {
    const auto spelled = [](const OperatorSettings& one) {
      return one.country + "/" + one.name + "/" + one.apn;
    };
    error = "more than one is " + std::string(name) + ", such as " + spelled(found.front()) +
            " and " + spelled(*other);
    return std::nullopt;
  }
  const OperatorSettings& settings = found.front();
  Profile profile;
  profile.url = settings.url;
  if (!settings.proxyHost.empty()) {
    profile.proxy = settings.proxyHost + ":" + std::to_string(settings.proxyPort);
  }
  profile.user = settings.user;
  profile.password = settings.password;
  return profile;
}

}  // namespace mmsbrix::tool
