// Lack of memory in functions with C linkage, whose callers expect a result and no exception.
#ifndef MMSBRIX_PLATFORM_LACK_OF_MEMORY_H
#define MMSBRIX_PLATFORM_LACK_OF_MEMORY_H

#include <new>
#include <stdexcept>
#include <utility>

namespace mmsbrix {

/// The result of `step`, or `failed` when memory does not suffice for it.
template <class Result, class Step>
[[nodiscard]] Result orWithoutMemory(Result failed, Step&& step) {
  try {
    return std::forward<Step>(step)();
  } catch (const std::bad_alloc&) {
    return failed;
  } catch (const std::length_error&) {  // more than a container can ever hold
    return failed;
  }
}

}  // namespace mmsbrix

#endif  // MMSBRIX_PLATFORM_LACK_OF_MEMORY_H
