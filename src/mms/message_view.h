/// @file
/// Reading an MMS PDU of any type without copying it: fields, parts and headers as views over the
/// caller's buffer, found by the same walk as the decoder and the inspector.  [OMA-MMS-ENC 6, 7;
/// WAP-230 8.4, 8.5]
///
/// A view allocates nothing and keeps nothing but a table of where the fields lie, so its cost is
/// that of the header block alone, however large the parts are.  Lengths in the data are clamped to
/// what is there; any octets are fine.  The buffer must stay, unchanged, for as long as a view of
/// it or anything taken from one is used.
#ifndef MMSBRIX_MMS_MESSAGE_VIEW_H
#define MMSBRIX_MMS_MESSAGE_VIEW_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

#include "../export.h"
#include "../model/mmaddr.h"
#include "../model/mmhdr.h"
#include "../wsp/value_form.h"

namespace mmsbrix {

/// A text as it stands on the wire; octets beyond ASCII are in `charset`.
struct TextView {
  std::string_view text;     ///< without its terminating zero
  std::string_view charset;  ///< name, "" when none is stated or it is unknown
};

/// An address without the suffix that states its kind.
struct AddressView {
  std::string_view text;                     ///< as it stands
  std::string_view charset;                  ///< as in a TextView
  CMMAddr::TYPE type = CMMAddr::TYPE_OTHER;  ///< what the suffix says
};

/// A field of the header block.  The readers take the value for what it is read as; which of them
/// fits, the field's code tells.
struct FieldView {
  int code = -1;          ///< without the high bit; -1 for an application header in text form
  std::string_view name;  ///< of an application header, as it stands
  ValueForm form = ValueForm::none;     ///< how the value stands on the wire
  std::span<const std::uint8_t> value;  ///< its octets

  /// An enumerated octet, yes or no, or a version; nothing for a value of another form.
  [[nodiscard]] MMSBRIX_API std::optional<std::uint8_t> octet() const noexcept;
  /// A number or a date in seconds; of Expiry and Delivery-Time the seconds behind the token.
  [[nodiscard]] MMSBRIX_API std::optional<std::uint64_t> number() const noexcept;
  /// A text, with or without charset; "" for a value of another form.
  [[nodiscard]] MMSBRIX_API TextView text() const noexcept;
  /// A recipient, or the sender; of From "" where the relay is to insert it.
  [[nodiscard]] MMSBRIX_API AddressView address() const noexcept;
};

/// A parameter of a content type.
struct ParameterView {
  std::string_view name;   ///< empty for a number that is not assigned
  std::string_view value;  ///< valid until the visit of it returns
};

/// A header of a part.
struct HeaderView {
  std::string_view name;             ///< empty for a number that is not assigned
  ValueForm form = ValueForm::none;  ///< how the value stands on the wire
  std::string_view
      text;  ///< the value where it stands as text, without the mark that opens a quoted-string
  std::span<const std::uint8_t> value;  ///< as it stands
};

namespace detail {
/// A function to call with a `View`, and what it needs; it returns false to end the walk.
template <class View>
struct Visitor {
  void* function;                                  ///< the caller's
  bool (*call)(void* function, const View& view);  ///< calls it

  /// For a function that returns nothing or whether to go on; it must outlive the walk.
  template <class Function>
  static Visitor of(Function& function) noexcept {
    return {&function, [](void* target, const View& view) {
              if constexpr (std::is_void_v<std::invoke_result_t<Function&, const View&>>) {
                return (*static_cast<Function*>(target))(view), true;
              } else {
                return static_cast<bool>((*static_cast<Function*>(target))(view));
              }
            }};
  }
};
}  // namespace detail

/// A content-type value: the media type, and its parameters when they are asked for.
class ContentTypeView {
 public:
  ContentTypeView() = default;
  /// Of the value's octets; any will do.
  MMSBRIX_API explicit ContentTypeView(std::span<const std::uint8_t> value) noexcept;

  /// As it stands or by its number; "" for a number that is not assigned.
  [[nodiscard]] std::string_view mediaType() const noexcept { return mediaType_; }
  /// Calls `visit` with each ParameterView; a visit that returns false ends the walk.
  template <class Visit>
  void eachParameter(Visit&& visit) const {
    walk(detail::Visitor<ParameterView>::of(visit));
  }

 private:
  MMSBRIX_API void walk(detail::Visitor<ParameterView> visitor) const;

  std::span<const std::uint8_t> value_;
  std::string_view mediaType_;
};

/// A body part.
struct PartView {
  ContentTypeView contentType;            ///< of the content
  std::span<const std::uint8_t> content;  ///< as far as it is there
  std::span<const std::uint8_t> headers;  ///< those behind the content type, as they stand

  /// Calls `visit` with each HeaderView; a visit that returns false ends the walk.
  template <class Visit>
  void eachHeader(Visit&& visit) const {
    walk(detail::Visitor<HeaderView>::of(visit));
  }
  /// The text of the first header of that name, letters in any case; "" without one.
  [[nodiscard]] MMSBRIX_API std::string_view header(std::string_view name) const noexcept;

 private:
  MMSBRIX_API void walk(detail::Visitor<HeaderView> visitor) const;
};

/// A PDU.  Fields are found by their codes, parts by walking.
class MessageView {
 public:
  /// Field codes that have a use of their own here; all others are found by number too.
  enum Field : int {
    kContentType = 0x04,
    kFrom = 0x09,
    kMessageType = 0x0C,
  };

  /// Walks the header block of the `size` octets at `data`.
  MMSBRIX_API MessageView(const void* data, unsigned int size) noexcept;

  /// The message-type octet; 0 when there is none.
  [[nodiscard]] int messageType() const noexcept {
    const auto type = find(kMessageType);
    return type ? type->octet().value_or(0) : 0;
  }
  /// The last field of that code whose value has a form that the field can have; nothing without
  /// one.  It is the one that the decoder keeps, save where that takes nothing from it: a From to
  /// be inserted, a time of 0, a message class in text form.
  [[nodiscard]] MMSBRIX_API std::optional<FieldView> find(int code) const noexcept;
  /// Calls `visit` with each FieldView in its order, fields on other code pages left out; a visit
  /// that returns false ends the walk.
  template <class Visit>
  void eachField(Visit&& visit) const {
    walk(detail::Visitor<FieldView>::of(visit));
  }

  /// Of the whole message; with the media type "" for a PDU without a Content-Type field.
  [[nodiscard]] const ContentTypeView& contentType() const noexcept { return contentType_; }
  /// True when the body of an m-send-req or m-retrieve-conf is made of parts.
  [[nodiscard]] bool isMultipart() const noexcept { return isMultipart_; }
  /// The octets behind the header block of an m-send-req or m-retrieve-conf that has a content
  /// type; empty for every other PDU.
  [[nodiscard]] std::span<const std::uint8_t> body() const noexcept { return body_; }
  /// Calls `visit` with each PartView of a multipart body; a visit that returns false ends the
  /// walk.
  template <class Visit>
  void eachPart(Visit&& visit) const {
    walk(detail::Visitor<PartView>::of(visit));
  }

 private:
  MMSBRIX_API void walk(detail::Visitor<FieldView> visitor) const;
  MMSBRIX_API void walk(detail::Visitor<PartView> visitor) const;

  struct Place {
    std::uint32_t offset;
    std::uint32_t size;  // 0 for a field that is not there
  };

  std::span<const std::uint8_t> pdu_;
  std::span<const std::uint8_t> body_;
  ContentTypeView contentType_;
  bool isMultipart_ = false;
  std::array<Place, 64> fields_{};  // by code
};

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_MESSAGE_VIEW_H
