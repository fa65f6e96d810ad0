// A stream whose operations have the types of C++ only, the same on every platform.  The other side
// is in support/win32.
#ifndef MMSBRIX_TESTS_SUPPORT_OCTET_STREAM_H
#define MMSBRIX_TESTS_SUPPORT_OCTET_STREAM_H

#include <cstdint>

#include "platform/istream.h"

namespace mmsbrix::test {

class OctetStream : public IStream {
 public:
  std::int32_t Read(void* buffer, StreamOctets octets, StreamOctets* done) final {
    return read(buffer, octets, *done) ? 0 : -1;
  }
  std::int32_t Write(const void* buffer, StreamOctets octets, StreamOctets* done) final {
    return write(buffer, *done = octets) ? 0 : -1;
  }
  std::int32_t Seek(LARGE_INTEGER distance, std::uint32_t origin, ULARGE_INTEGER*) final {
    return seek(distance.QuadPart, origin) ? 0 : -1;
  }
  std::int32_t Stat(STATSTG* status, std::uint32_t) final {
    return size(status->cbSize.QuadPart) ? 0 : -1;
  }

 protected:
  ~OctetStream() = default;
  virtual bool read(void* buffer, StreamOctets octets, StreamOctets& done) = 0;
  virtual bool write(const void* buffer, StreamOctets octets) = 0;
  virtual bool seek(std::int64_t distance, std::uint32_t origin) = 0;
  virtual bool size(std::uint64_t& octets) = 0;
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_OCTET_STREAM_H
