/// @file
/// The MMS settings of mobile operators, from the database of the package
/// mobile-broadband-provider-info.
#ifndef MMSBRIX_TRANSPORT_OPERATORS_H
#define MMSBRIX_TRANSPORT_OPERATORS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "../export.h"

namespace mmsbrix {

/// How an operator's MMS relay is reached.  An operator with several ways has a record for each.
struct OperatorSettings {
  std::string country;          ///< ISO 3166 letters in lower case, "fi"
  std::string name;             ///< of the operator, UTF-8
  std::string plan;             ///< name of the access point for people, "" when it has none
  std::string apn;              ///< access point name, which the device's own connection needs
  std::string url;              ///< of the relay
  std::string proxyHost;        ///< "" for none
  std::uint16_t proxyPort = 0;  ///< 80 where the database names none
  std::string user;             ///< "" for none
  std::string password;         ///< "" for none
};

/// Where the database is installed.
inline constexpr const char* kOperatorDatabase =
    "/usr/share/mobile-broadband-provider-info/serviceproviders.xml";

/// Every access point of the database that has a relay, in its order.  Nothing when the file cannot
/// be read or is no such database, and `error` says why.
MMSBRIX_API std::optional<std::vector<OperatorSettings>> loadOperators(const std::string& path,
                                                                       std::string& error);

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_OPERATORS_H
