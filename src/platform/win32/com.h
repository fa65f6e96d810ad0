// Holders for what the component object model hands out.
#ifndef MMSBRIX_PLATFORM_WIN32_COM_H
#define MMSBRIX_PLATFORM_WIN32_COM_H

#include <windows.h>

#include <oleauto.h>

#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "platform/win32/text.h"

namespace mmsbrix::platform {

/// One reference to an interface.
template <class Interface>
class ComPointer {
 public:
  ComPointer() = default;
  ComPointer(ComPointer&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
  ComPointer& operator=(ComPointer&& other) noexcept {
    std::swap(pointer_, other.pointer_);
    return *this;
  }
  ~ComPointer() { reset(); }

  [[nodiscard]] Interface* get() const noexcept { return pointer_; }
  Interface* operator->() const noexcept { return pointer_; }
  explicit operator bool() const noexcept { return pointer_ != nullptr; }
  /// Where a function stores a new reference.
  Interface** out() noexcept {
    reset();
    return &pointer_;
  }
  /// Gives the reference away.
  [[nodiscard]] Interface* release() noexcept { return std::exchange(pointer_, nullptr); }
  void reset() noexcept {
    if (pointer_ != nullptr) std::exchange(pointer_, nullptr)->Release();
  }

 private:
  Interface* pointer_ = nullptr;
};

/// A text of the component object model.
class ComText {
 public:
  ComText() = default;
  explicit ComText(std::wstring_view text)
      : text_(::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {
    if (text_ == nullptr) throw std::bad_alloc();
  }
  ComText(const ComText&) = delete;
  ComText& operator=(const ComText&) = delete;
  ~ComText() { ::SysFreeString(text_); }

  [[nodiscard]] BSTR get() const noexcept { return text_; }
  BSTR* out() noexcept {
    ::SysFreeString(std::exchange(text_, nullptr));
    return &text_;
  }
  [[nodiscard]] std::string utf8() const { return utf8FromWide({text_, ::SysStringLen(text_)}); }

 private:
  BSTR text_ = nullptr;
};

/// A value of the component object model.
class ComValue {
 public:
  ComValue() noexcept { ::VariantInit(&value_); }
  ComValue(const ComValue&) = delete;
  ComValue& operator=(const ComValue&) = delete;
  ~ComValue() { ::VariantClear(&value_); }

  VARIANT* out() noexcept {
    ::VariantClear(&value_);
    return &value_;
  }
  /// As text, whatever its kind; empty when there is no such conversion.
  [[nodiscard]] std::string utf8() {
    if (value_.vt != VT_BSTR && ::VariantChangeType(&value_, &value_, 0, VT_BSTR) != S_OK)
      return {};
    return utf8FromWide({value_.bstrVal, ::SysStringLen(value_.bstrVal)});
  }

 private:
  VARIANT value_;
};

/// The component object model on this thread.  The caller has initialised it; where that is not so,
/// it is initialised for as long as this lives.
class ComScope {
 public:
  ComScope() noexcept : entered_(SUCCEEDED(::CoInitialize(nullptr))) {}
  ComScope(const ComScope&) = delete;
  ComScope& operator=(const ComScope&) = delete;
  ~ComScope() {
    if (entered_) ::CoUninitialize();
  }

 private:
  const bool entered_;
};

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_WIN32_COM_H
