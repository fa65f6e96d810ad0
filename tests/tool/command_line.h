// Subcommands called as the program calls them, with their streams caught.
#ifndef MMSBRIX_TESTS_TOOL_COMMAND_LINE_H
#define MMSBRIX_TESTS_TOOL_COMMAND_LINE_H

#include <sstream>
#include <string>

#include "command.h"

namespace mmsbrix::test {

struct Caught {
  std::istringstream in;
  std::ostringstream out;
  std::ostringstream err;
  [[nodiscard]] tool::Streams streams() { return {in, out, err}; }
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_TOOL_COMMAND_LINE_H
