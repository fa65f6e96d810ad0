// Named settings of relays in the user's configuration file.
//
// The file has sections in brackets and lines "name = value", and is readable by its owner only,
// since it may hold passwords.  It is $XDG_CONFIG_HOME/mmsbrix/profiles, by default
// ~/.config/mmsbrix/profiles.  [XDG Base Directory Specification]
#ifndef MMSBRIX_TOOLS_PROFILES_H
#define MMSBRIX_TOOLS_PROFILES_H

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace mmsbrix::tool {

/// How a relay is reached; what is empty is not set.
struct Profile {
  std::string url{};
  std::string proxy{};
  std::string user{};
  std::string password{};
  std::string userAgent{};
  std::string profileUrl{};
  std::string ca{};
};

/// The members by their names in the file.
inline constexpr auto kProfileMembers =
    std::to_array<std::pair<std::string_view, std::string Profile::*>>({
        {"url", &Profile::url},
        {"proxy", &Profile::proxy},
        {"user", &Profile::user},
        {"password", &Profile::password},
        {"user-agent", &Profile::userAgent},
        {"profile-url", &Profile::profileUrl},
        {"ca", &Profile::ca},
    });

using Profiles = std::map<std::string, Profile>;

/// Where the profiles are; "" when the environment names no place.
[[nodiscard]] std::string profilesPath();
/// All profiles, none when there is no file; nothing, with `error` set, when it cannot be read.
/// Permissions that others have on the file are taken away.
[[nodiscard]] std::optional<Profiles> loadProfiles(std::string& error);
/// Writes them; false, with `error` set, when that fails, and then the old file stays.
bool saveProfiles(const Profiles& profiles, std::string& error);

/// The settings of an operator, named "fi/DNA" or, where it has several ways, "fi/DNA/mms"
/// with the access point.  Letters may be in any case, and a part of the operator's name will do
/// when no other has it.  Nothing, with `error` set, when there is none or more than one.
[[nodiscard]] std::optional<Profile> operatorProfile(std::string_view name,
                                                     const std::string& database,
                                                     std::string& error);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_PROFILES_H
