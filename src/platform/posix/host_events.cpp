#include "platform/host_events.h"

namespace mmsbrix::platform {

// No event queue of the system's: hosts set a pump of their own.
void dispatchHostEvents() {}

}  // namespace mmsbrix::platform
