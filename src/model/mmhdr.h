/// @file
/// CMMParam, CMMParamList, CMMHdr and CMMHdrList: header fields with parameters.
#ifndef MMSBRIX_MODEL_MMHDR_H
#define MMSBRIX_MODEL_MMHDR_H

#include <string_view>

#include "../export.h"
#include "mmlist.h"
#include "mmtext.h"

/// A name and a value, such as the "charset" of a content type.  Getters never return null.
class MMSBRIX_API CMMParam {
 public:
  CMMParam() = default;
  /// Copies both; null is the empty text.
  CMMParam(const char* name, const char* value);

  /// Replaces the name; null empties it.
  void Set(const char* name);
  /// Replaces the value; null empties it.
  void SetValue(const char* value);
  /// The name; valid until it is replaced.
  const char* Get() const noexcept { return name_.c_str(); }
  /// The value; valid until it is replaced.
  const char* GetValue() const noexcept { return value_.c_str(); }

  /// The same from views, whose length is then known; a text ends at its first zero.
  void Assign(std::string_view name, std::string_view value);
  /// The same for texts that are a `StaticText` or a `ZeroFreeText`.
  template <class Name, class Value>
  void Assign(Name name, Value value) {
    name_.assign(name);
    value_.assign(value);
  }
  ///@{
  /// The texts of Get and GetValue with their lengths.
  std::string_view Name() const noexcept { return name_.view(); }
  std::string_view Value() const noexcept { return value_.view(); }
  ///@}

 private:
  mmsbrix::Text name_;
  mmsbrix::Text value_;
};

#if MMSBRIX_EXTERN_TEMPLATES
extern template class MMSBRIX_API mmsbrix::CMMNamedList<CMMParam>;
#endif

/// Parameters in order, found by name.
class MMSBRIX_API CMMParamList : public mmsbrix::CMMNamedList<CMMParam> {};

/// A header field: name, value without parameters (a media type, say), parameters in order.
class MMSBRIX_API CMMHdr {
 public:
  CMMHdr() = default;
  /// Copies both; null is the empty text.
  CMMHdr(const char* name, const char* value);

  /// Replaces the name; null empties it.
  void Set(const char* name);
  /// Replaces both and leaves the parameters.
  void Set(const char* name, const char* value);
  /// Replaces the value; null empties it.
  void SetValue(const char* value);
  /// The name; valid until it is replaced.
  const char* Get() const noexcept { return name_.c_str(); }
  /// The value without parameters; valid until it is replaced.
  const char* GetValue() const noexcept { return value_.c_str(); }
  ///@{
  /// The header's own parameters, never null.
  CMMParamList* Params() noexcept { return &params_; }
  const CMMParamList* Params() const noexcept { return &params_; }
  ///@}

  /// The same from views, whose length is then known; a text ends at its first zero.
  void Assign(std::string_view name, std::string_view value);
  /// The same for texts that are a `StaticText` or a `ZeroFreeText`.
  template <class Name, class Value>
  void Assign(Name name, Value value) {
    name_.assign(name);
    value_.assign(value);
  }
  ///@{
  /// The texts of Get and GetValue with their lengths.
  std::string_view Name() const noexcept { return name_.view(); }
  std::string_view Value() const noexcept { return value_.view(); }
  ///@}

 private:
  mmsbrix::Text name_;
  mmsbrix::Text value_;
  CMMParamList params_;
};

#if MMSBRIX_EXTERN_TEMPLATES
extern template class MMSBRIX_API mmsbrix::CMMNamedList<CMMHdr>;
#endif

/// Header fields in order, found by name.
class MMSBRIX_API CMMHdrList : public mmsbrix::CMMNamedList<CMMHdr> {};

#endif  // MMSBRIX_MODEL_MMHDR_H
