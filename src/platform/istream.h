// IStream, the octet stream that media content is read from and written to.  Windows brings the
// interface itself; elsewhere the four operations that the library calls are declared here with the
// same meaning.
#ifndef MMSBRIX_PLATFORM_ISTREAM_H
#define MMSBRIX_PLATFORM_ISTREAM_H

#ifdef _WIN32
#include <objidl.h>
#include <windows.h>

namespace mmsbrix {
using StreamOctets = ULONG;
}
#else
#include <cstdint>

namespace mmsbrix {
using StreamOctets = std::uint32_t;
}

struct LARGE_INTEGER {
  std::int64_t QuadPart;
};
struct ULARGE_INTEGER {
  std::uint64_t QuadPart;
};
/// What a stream tells about itself.
struct STATSTG {
  ULARGE_INTEGER cbSize;  ///< in octets
};

/// A stream of octets with a position.  Results are negative on failure.  The caller keeps the
/// stream.
class IStream {
 public:
  /// Reads up to `octets`; `*done`, if given, receives how many there were, fewer at the end.
  virtual std::int32_t Read(void* buffer, mmsbrix::StreamOctets octets,
                            mmsbrix::StreamOctets* done) = 0;
  virtual std::int32_t Write(const void* buffer, mmsbrix::StreamOctets octets,
                             mmsbrix::StreamOctets* done) = 0;
  /// Moves the position by `distance` from the beginning (`origin` 0), the position (1) or the end
  /// (2); `*position`, if given, receives the new one.
  virtual std::int32_t Seek(LARGE_INTEGER distance, std::uint32_t origin,
                            ULARGE_INTEGER* position) = 0;
  /// `what` 1 leaves out what takes time to find.
  virtual std::int32_t Stat(STATSTG* status, std::uint32_t what) = 0;

 protected:
  ~IStream() = default;
};
#endif

#endif  // MMSBRIX_PLATFORM_ISTREAM_H
