#include "platform/charset.h"

#include <iconv.h>

#include <cerrno>

namespace mmsbrix::platform {
namespace {

class Conversion {
 public:
  Conversion(const std::string& to, const std::string& from) noexcept
      : handle_(::iconv_open(to.c_str(), from.c_str())) {}
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;
  ~Conversion() {
    if (valid()) ::iconv_close(handle_);
  }

  [[nodiscard]] bool valid() const noexcept { return handle_ != kInvalid; }
  /// Like iconv: the octets left of input and output are taken off the counts.
  std::size_t step(char** in, std::size_t* inLeft, char** out, std::size_t* outLeft) noexcept {
    return ::iconv(handle_, in, inLeft, out, outLeft);
  }

 private:
  // NOLINTNEXTLINE(performance-no-int-to-ptr): what iconv_open returns on failure
  static inline const iconv_t kInvalid = reinterpret_cast<iconv_t>(-1);
  iconv_t handle_;
};

}  // namespace

std::optional<std::string> convertCharset(std::string_view octets, std::string_view from,
                                          std::string_view to) {
  Conversion conversion{std::string(to), std::string(from)};
  if (!conversion.valid()) return std::nullopt;
  std::string result;
  char chunk[1024];
  char* in = const_cast<char*>(octets.data());  // iconv does not write to its input
  std::size_t inLeft = octets.size();
  // With the input used up one more step, without input, ends a state that the charset may have.
  for (bool ending = false;;) {
    char* out = chunk;
    std::size_t outLeft = sizeof chunk;
    const std::size_t done = conversion.step(ending ? nullptr : &in, &inLeft, &out, &outLeft);
    result.append(chunk, sizeof chunk - outLeft);
    if (done == static_cast<std::size_t>(-1)) {
      if (errno != E2BIG) return std::nullopt;
    } else if (done != 0) {
      return std::nullopt;  // characters were replaced
    } else if (ending) {
      return result;
    } else {
      ending = true;
    }
  }
}

}  // namespace mmsbrix::platform
