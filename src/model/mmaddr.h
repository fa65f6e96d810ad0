/// @file
/// CMMAddr and CMMAddrList: recipients and senders.
#ifndef MMSBRIX_MODEL_MMADDR_H
#define MMSBRIX_MODEL_MMADDR_H

#include "../export.h"
#include "mmlist.h"
#include "mmstring.h"

/// An address and its kind.  The text never carries the "/TYPE=" suffix of the wire form.
class MMSBRIX_API CMMAddr {
 public:
  /// Kinds of addresses; on the wire a suffix of the text states them.  [OMA-MMS-ENC 7.2]
  enum TYPE : int {
    TYPE_OTHER = 0,  ///< kind not stated by the caller, or received with an unknown suffix
    TYPE_PLMN = 1,   ///< telephone number
    TYPE_IPV4 = 2,   ///< address of a device, dotted decimal
    TYPE_IPV6 = 3,   ///< address of a device, hexadecimal with colons
    TYPE_PLAIN = 4,  ///< received without a suffix, such as an e-mail address
  };

  CMMAddr() = default;
  /// Null `text` gives an empty address.
  CMMAddr(const char* text, TYPE type);
  /// Copies `*value`, text and charset; it must not be null.
  CMMAddr(const CMMString* value, TYPE type);

  ///@{
  /// The address's own text, never null; changing it changes the address.
  CMMString* Value() noexcept { return &value_; }
  const CMMString* Value() const noexcept { return &value_; }
  ///@}
  ///@{
  /// The text, as CMMString gives it.
  operator const char*() const noexcept { return value_.Get(); }
  operator char*() const noexcept { return const_cast<char*>(value_.Get()); }
  ///@}
  /// The kind that was stored or received.
  TYPE GetType() const noexcept { return type_; }
  /// Stores any value; nothing is checked.
  void SetType(TYPE type) noexcept { type_ = type; }

 private:
  CMMString value_;
  TYPE type_ = TYPE_OTHER;
};

#if MMSBRIX_EXTERN_TEMPLATES
extern template class MMSBRIX_API mmsbrix::CMMList<CMMAddr>;
#endif

/// Addresses in order; searched by walking.
class MMSBRIX_API CMMAddrList : public mmsbrix::CMMList<CMMAddr> {};

#endif  // MMSBRIX_MODEL_MMADDR_H
