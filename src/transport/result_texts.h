// The texts that go with the codes of a submission.
#ifndef MMSBRIX_TRANSPORT_RESULT_TEXTS_H
#define MMSBRIX_TRANSPORT_RESULT_TEXTS_H

#include <string_view>

namespace mmsbrix {

/// The text for an HTTP status, a WinINet error or a Win32 error; empty when the code has none.
[[nodiscard]] std::string_view resultText(unsigned code) noexcept;

/// What an error means, in words of our own beside those of `resultText`; "" for other numbers.
[[nodiscard]] std::string_view errorMeaning(unsigned code) noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_RESULT_TEXTS_H
