#include "platform/alert.h"

namespace mmsbrix::platform {

// A library has no window of its own here: hosts set a handler.
void showAlert(const std::string&, const std::string&) {}

}  // namespace mmsbrix::platform
