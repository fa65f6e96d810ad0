// Seam: where the system wants programs to keep what belongs to the user.
#ifndef MMSBRIX_PLATFORM_USER_FOLDERS_H
#define MMSBRIX_PLATFORM_USER_FOLDERS_H

#include <string>

namespace mmsbrix::platform {

/// The folder of our own for logs, in UTF-8 and without separator at its end; it need not exist.
/// Empty when the user has no home.
[[nodiscard]] std::string stateFolder();

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_USER_FOLDERS_H
