#include "platform/subscript.h"

#include <stdexcept>

namespace mmsbrix {

void throwInvalidSubscript() {
  throw std::out_of_range("invalid vector<T> subscript");
}

}  // namespace mmsbrix
