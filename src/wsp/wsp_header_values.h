// The typed values of the well-known headers: each holds its value as text, the form HTTP writes,
// and converts it to and from its octets.  One class per header, made from its row of the header
// table.  [WAP-230 8.4.2]
#ifndef MMSBRIX_WSP_WSP_HEADER_VALUES_H
#define MMSBRIX_WSP_WSP_HEADER_VALUES_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "wsp/header_table.h"
#include "wsp/wsp_header_coding.h"

namespace WapStack {

/// The value of a header.  On its own it is the value of a header without a row, whose format
/// nobody knows: a text stands for itself, any other form for "0x" and its octets in hex.
///
/// Encoding keeps to the codes of the encoding version in force.  Decoding takes exactly the octets
/// that the first of them announces, also when they mean nothing, so that what follows can be read.
/// A single zero octet is the empty text, and the other way round.
class Wap_value : public WapValue<Wap_value> {
 public:
  static constexpr std::string_view kTypeName = "Wap-value";
  Wap_value() = default;

  /// The row of the value's header; null when it has none.
  [[nodiscard]] const HeaderRow* row() const noexcept { return row_; }
  /// The encoding version in force is 1.2, which every peer has, to begin with.
  void setVersion(Version version) noexcept { version_ = version; }
  /// The text taken apart into what travels in repeated headers; at least one element.
  [[nodiscard]] std::vector<std::string_view> elements() const;

  /// Tries out the decoding, which may report.
  [[nodiscard]] bool isKind(const Reader& in) const override;
  /// Credentials are masked, save the name of their scheme.
  [[nodiscard]] std::string print() const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;

 protected:
  explicit Wap_value(const HeaderRow* row) : row_(row) {}

 private:
  const HeaderRow* row_ = nullptr;
  Version version_ = WapAssignments::kVersion12;
};

/// The value of the well-known header with that code.
template <std::size_t Code>
class Header_value : public WapValue<Header_value<Code>, Wap_value> {
 public:
  static constexpr std::string_view kTypeName = kHeaderTable[Code].name;
  Header_value() : WapValue<Header_value, Wap_value>(&kHeaderTable[Code]) {}
  explicit Header_value(std::string_view text) : Header_value() { this->setText(text); }
};

/// The value of Content-Type, also where it stands as a field of its own: in a PDU and at the
/// beginning of a multipart entry.
class Content_type_value : public WapValue<Content_type_value, Header_value<0x11>> {
 public:
  static constexpr std::string_view kTypeName = "Content-type-value";
  Content_type_value() = default;
  explicit Content_type_value(std::string_view text) { setText(text); }

  /// The media type, without parameters.
  [[nodiscard]] std::string_view mediaType() const;
  /// The value of a parameter, without quotation marks; nothing when there is none of that name, in
  /// any case.  One without a value is empty.
  [[nodiscard]] std::optional<std::string> parameter(std::string_view name) const;
  /// True for a media type whose body is a WSP multipart.
  [[nodiscard]] bool isMultipart() const;
};

/// A value of the class that the header of that code has; without a row, of the one for any header.
[[nodiscard]] std::unique_ptr<Wap_value> makeHeaderValue(std::size_t code);

/// The text of a header's value as people may read it: credentials are masked.
[[nodiscard]] std::string printedValue(const HeaderRow* row, std::string_view text);

}  // namespace WapStack

#endif  // MMSBRIX_WSP_WSP_HEADER_VALUES_H
