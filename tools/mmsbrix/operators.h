// The subcommands `operators`, which looks up relays of mobile operators, and `config`, which keeps
// settings under names.
#ifndef MMSBRIX_TOOLS_OPERATORS_H
#define MMSBRIX_TOOLS_OPERATORS_H

#include <mmsbrix/transport/operators.h>

#include <CLI/App.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "command.h"
#include "profiles.h"

namespace mmsbrix::tool {

/// The command line of `operators`.
struct OperatorsCommand {
  std::string country;
  std::string name;
  std::string database = kOperatorDatabase;
};

/// The command line of `config`.
struct ConfigCommand {
  std::string name;  ///< of the profile; empty for a list of them
  Profile changes;
  std::string credentialsFile;
  std::string operatorName;
  std::string database = kOperatorDatabase;
  bool remove = false;
};

/// Add the subcommands to a parser; `command` receives what is given and must outlive it.
CLI::App* addOperators(CLI::App& app, OperatorsCommand& command);
CLI::App* addConfig(CLI::App& app, ConfigCommand& command);

/// Prints a line for each way to a relay that fits.
int runOperators(const OperatorsCommand& command, const Streams& streams);
/// Prints, changes or removes a profile; passwords are not shown.
int runConfig(const ConfigCommand& command, const Streams& streams);

/// Those of a country whose name is `name`, or else has it in it; in any case of letters.  Empty
/// texts fit everything.
[[nodiscard]] std::vector<OperatorSettings> findOperators(const std::vector<OperatorSettings>& all,
                                                          std::string_view country,
                                                          std::string_view name,
                                                          std::string_view apn);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_OPERATORS_H
