// The file of an encoded message, read whole.
#ifndef MMSBRIX_TRANSPORT_MESSAGE_FILE_H
#define MMSBRIX_TRANSPORT_MESSAGE_FILE_H

#include <cstdint>
#include <optional>
#include <vector>

namespace mmsbrix {

/// The octets of `path` (UTF-8); nothing, with the Win32 error number in `error`, when it cannot be
/// read.  Throws std::bad_alloc for one larger than the memory.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> readMessageFile(const char* path,
                                                                       unsigned& error);

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_MESSAGE_FILE_H
