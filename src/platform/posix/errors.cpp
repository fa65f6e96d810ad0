#include "platform/posix/errors.h"

#include <cerrno>

#include "platform/files.h"

namespace mmsbrix::platform {

unsigned win32Error(int error) noexcept {
  switch (error) {
    case 0:
      return 0;
    case ENOENT:
      return kErrorFileNotFound;
    case ENOTDIR:
    case ELOOP:
      return kErrorPathNotFound;
    case EMFILE:
    case ENFILE:
      return kErrorTooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
      return kErrorAccessDenied;
    case ENOMEM:
      return kErrorNotEnoughMemory;
    case EEXIST:
      return kErrorFileExists;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return kErrorDiskFull;
    case EINVAL:
    case ENAMETOOLONG:
      return kErrorInvalidName;
    default:
      return kErrorReadFault;
  }
}

}  // namespace mmsbrix::platform
