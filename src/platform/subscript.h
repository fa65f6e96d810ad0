// The one failure that lists throw: an index that no element has.
#ifndef MMSBRIX_PLATFORM_SUBSCRIPT_H
#define MMSBRIX_PLATFORM_SUBSCRIPT_H

#include "../export.h"

namespace mmsbrix {

/// Throws std::out_of_range with the text "invalid vector<T> subscript".
[[noreturn]] MMSBRIX_API void throwInvalidSubscript();

}  // namespace mmsbrix

#endif  // MMSBRIX_PLATFORM_SUBSCRIPT_H
