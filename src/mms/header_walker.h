// The bounded walk over a header block: the one place that finds where each field of an MMS PDU, or
// each header of a body part, begins and ends.  The decoder and the inspector both read what it
// yields. [OMA-MMS-ENC 7; WAP-230 8.4.2.1, 8.4.2.6]
#ifndef MMSBRIX_MMS_HEADER_WALKER_H
#define MMSBRIX_MMS_HEADER_WALKER_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "mms/value_form.h"
#include "wsp/octets.h"

namespace mmsbrix {

inline constexpr std::uint8_t kFirstPage = 1;  ///< code page that a header block starts on
inline constexpr std::uint8_t kContentTypeField = 0x04;  ///< ends an MMS header block

/// One step of the walk.  Views and offsets refer to the octets walked over.
struct HeaderItem {
  enum class Kind {
    wellKnown,  ///< a code with the high bit set, then a value
    text,       ///< a name and a value, both zero-terminated
    shift,      ///< a header code page shift; `page` is the new page
    zero,       ///< a zero octet between fields
  };
  Kind kind = Kind::zero;
  std::uint8_t code = 0;  ///< of a well-known field, without the high bit
  std::uint8_t page = kFirstPage;
  std::size_t offset = 0;       ///< of the first octet
  std::size_t valueOffset = 0;  ///< of the value
  std::string_view name;        ///< of a textual header, as it stands
  ValueForm form = ValueForm::none;
  Octets value;                ///< clamped to what is there
  std::size_t statedSize = 0;  ///< octets the value claims; more than `value` has when cut short, 0
                               ///< when its length is broken

  [[nodiscard]] std::size_t end() const noexcept { return valueOffset + value.size(); }
  [[nodiscard]] bool cutShort() const noexcept { return statedSize > value.size(); }
};

class HeaderWalker {
 public:
  enum class Block {
    message,  ///< the fields of a PDU; Content-Type is the last of them, the body follows
    part,     ///< the headers of a body part
  };
  HeaderWalker(Octets octets, Block block) noexcept : in_(octets), block_(block) {}

  /// Moves to the next item; false at the end of the block.  A value whose length is broken ends
  /// it.
  bool next(HeaderItem& item) noexcept;
  /// Octets walked over.
  [[nodiscard]] std::size_t position() const noexcept { return in_.position(); }
  /// True once a value with a broken length has ended the walk before the octets did.
  [[nodiscard]] bool broken() const noexcept { return broken_; }

 private:
  void takeValue(HeaderItem& item, std::size_t stated) noexcept;

  Reader in_;
  Block block_;
  std::uint8_t page_ = kFirstPage;
  bool done_ = false;
  bool broken_ = false;
};

/// The form of a value by its first octet.
[[nodiscard]] ValueForm formOf(Octets value) noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_HEADER_WALKER_H
