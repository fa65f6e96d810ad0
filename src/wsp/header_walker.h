// The bounded walk over a header block: the one place that finds where each header of a WSP header
// block or a body part, or each field of an MMS PDU, begins and ends.
// [WAP-230 8.4.1.2, 8.4.2.1, 8.4.2.6; OMA-MMS-ENC 7]
#ifndef MMSBRIX_WSP_HEADER_WALKER_H
#define MMSBRIX_WSP_HEADER_WALKER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "wsp/octets.h"
#include "wsp/value_form.h"

namespace mmsbrix {

inline constexpr std::uint8_t kFirstPage = 1;           ///< code page that a header block starts on
inline constexpr std::uint8_t kShiftDelimiter = 127;    ///< precedes the number of a page
inline constexpr std::uint8_t kLastShortCutShift = 31;  ///< pages up to this one are one octet

/// One step of the walk.  Views and offsets refer to the octets walked over.
struct HeaderItem {
  enum class Kind {
    wellKnown,  ///< a code with the high bit set, then a value
    text,       ///< a name and a value, both zero-terminated
    shift,      ///< a header code page shift; `page` is the new page
    zero,       ///< a zero octet between fields
  };
  Kind kind = Kind::zero;
  std::uint8_t code = 0;        ///< of a well-known field, without the high bit
  std::size_t offset = 0;       ///< of the first octet
  std::size_t valueOffset = 0;  ///< of the value
  std::string_view name;        ///< of a textual header, as it stands
  ValueForm form = ValueForm::none;
  Octets value;                ///< clamped to what is there
  std::size_t statedSize = 0;  ///< octets the value claims; more than `value` has when cut short, 0
                               ///< when its length is broken
  std::uint8_t page = kFirstPage;  // not beside `kind`: both would be read as one word, too early

  [[nodiscard]] std::size_t end() const noexcept { return valueOffset + value.size(); }
  [[nodiscard]] bool cutShort() const noexcept { return statedSize > value.size(); }
};

/// What is special about a block.
struct HeaderBlockRules {
  /// The well-known field on the first page that holds a content-type value and ends the block.
  std::optional<std::uint8_t> lastField = std::nullopt;
  /// True where the value of a textual name is a text whatever it begins with.
  bool textAfterTextName = false;
};

class HeaderWalker {
 public:
  explicit HeaderWalker(Octets octets, HeaderBlockRules rules = {}) noexcept
      : in_(octets), rules_(rules) {}

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
  HeaderBlockRules rules_;
  std::uint8_t page_ = kFirstPage;
  bool done_ = false;
  bool broken_ = false;
};

/// The form of a value by its first octet.
[[nodiscard]] ValueForm formOf(Octets value) noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_WSP_HEADER_WALKER_H
