// Seam: keeping the host alive while the library waits on the host's thread.
#ifndef MMSBRIX_PLATFORM_HOST_EVENTS_H
#define MMSBRIX_PLATFORM_HOST_EVENTS_H

namespace mmsbrix::platform {

/// Removes and dispatches the pending events of the calling thread, where the platform has a queue
/// of them.
void dispatchHostEvents();

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_HOST_EVENTS_H
