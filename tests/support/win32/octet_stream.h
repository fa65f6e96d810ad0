// A stream whose operations have the types of C++ only, the same on every platform.  The other side
// is in support/posix.
#ifndef MMSBRIX_TESTS_SUPPORT_OCTET_STREAM_H
#define MMSBRIX_TESTS_SUPPORT_OCTET_STREAM_H

#include <cstdint>

#include "platform/istream.h"

namespace mmsbrix::test {

/// Lives with its owner, whoever refers to it.
class OctetStream : public IStream {
 public:
  HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG octets, ULONG* done) final {
    return read(buffer, octets, *done) ? S_OK : E_FAIL;
  }
  HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG octets, ULONG* done) final {
    return write(buffer, *done = octets) ? S_OK : E_FAIL;
  }
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER distance, DWORD origin, ULARGE_INTEGER*) final {
    return seek(distance.QuadPart, origin) ? S_OK : E_FAIL;
  }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* status, DWORD) final {
    std::uint64_t octets = 0;
    const bool known = size(octets);
    status->cbSize.QuadPart = octets;
    return known ? S_OK : E_FAIL;
  }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) final { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() final { return 1; }
  ULONG STDMETHODCALLTYPE Release() final { return 1; }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) final { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                   ULARGE_INTEGER*) final {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Commit(DWORD) final { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Revert() final { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) final {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) final {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Clone(IStream**) final { return E_NOTIMPL; }

 protected:
  ~OctetStream() = default;
  virtual bool read(void* buffer, StreamOctets octets, StreamOctets& done) = 0;
  virtual bool write(const void* buffer, StreamOctets octets) = 0;
  virtual bool seek(std::int64_t distance, std::uint32_t origin) = 0;
  virtual bool size(std::uint64_t& octets) = 0;
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_OCTET_STREAM_H
