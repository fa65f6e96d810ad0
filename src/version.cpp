#include "version.h"

namespace mmsbrix {

const char* version() noexcept {
  return MMSBRIX_VERSION;
}

}  // namespace mmsbrix
