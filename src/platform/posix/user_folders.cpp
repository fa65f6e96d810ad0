#include "platform/user_folders.h"

#include <cstdlib>

namespace mmsbrix::platform {

// As the XDG base directory specification has it; a relative path counts as unset.
std::string stateFolder() {
  const char* state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && state[0] == '/') return std::string(state) + "/mmsbrix";
  const char* home = std::getenv("HOME");
  if (home == nullptr || home[0] != '/') return {};
  return std::string(home) + "/.local/state/mmsbrix";
}

}  // namespace mmsbrix::platform
