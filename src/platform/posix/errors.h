// errno to the Win32 error numbers that callers know.
#ifndef MMSBRIX_PLATFORM_POSIX_ERRORS_H
#define MMSBRIX_PLATFORM_POSIX_ERRORS_H

namespace mmsbrix::platform {

/// The Win32 number nearest to an errno value; 0 stays 0.
[[nodiscard]] unsigned win32Error(int error) noexcept;

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_POSIX_ERRORS_H
