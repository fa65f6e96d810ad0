// Header lists: the headers of a PDU or of a multipart entry, as names and values in text and as
// octets with shifts between code pages.  [WAP-230 8.4.1, 8.4.2.6]
#ifndef MMSBRIX_WSP_WSP_HEADER_LIST_H
#define MMSBRIX_WSP_WSP_HEADER_LIST_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "wsp/wsp_header_filter.h"

namespace WapStack {

/// One header: its name and value as text, and the page that its name is from.
class Header {
 public:
  Header(std::string_view name, std::string_view value, std::uint8_t page = kDefaultPage)
      : name_(name), value_(value), page_(page) {}

  [[nodiscard]] const std::string& name() const noexcept { return name_; }
  [[nodiscard]] const std::string& value() const noexcept { return value_; }
  [[nodiscard]] std::uint8_t page() const noexcept { return page_; }
  /// Adds an element to the comma list that the value is.
  void addElement(std::string_view element) { value_.append(", ").append(element); }
  /// "Name: value" for logs; credentials are masked.
  [[nodiscard]] std::string print() const;

  /// Appends the header on its page, a list as repeated headers; as a textual name and a text when
  /// the filter or the value wants it.  False, with a report and nothing appended, for one that has
  /// no form on the wire.
  bool encodeToFrame(Writer& out, const CodePage& page, const HeaderEncodingFilter& filter) const;

 private:
  bool encodeInBinary(Writer& out, const CodePage& page, const HeaderEncodingFilter& filter) const;
  bool writeAsText(std::string_view value, Writer& out) const;

  std::string name_;
  std::string value_;
  std::uint8_t page_;
};

/// A header that was left out, and why.
struct HeaderFault {
  /// Of its first octet in a block that was decoded; of the header in a list that was encoded.
  std::size_t position;
  std::string name;  ///< "" where there is none
  std::string reason;
};

/// What becomes of a list that stands on the wire as repeated headers.
enum class RepeatedHeaders {
  joined,  ///< one header, its elements separated by commas, where the first of them stood
  kept,    ///< each as it stands
};

/// The headers of one PDU or multipart entry.
class Message_header {
 public:
  /// Gives a page names and values of its own; pages without one are known by number only.
  void usePage(std::shared_ptr<const CodePage> page);

  [[nodiscard]] const std::vector<Header>& headers() const noexcept { return headers_; }
  void add(Header header) { headers_.push_back(std::move(header)); }
  void clear() noexcept { headers_.clear(); }
  /// The first header of that name, in any case, on the default page; null without one.
  [[nodiscard]] const Header* find(std::string_view name) const noexcept;

  /// Appends all headers with the shifts they need.  A header that has no form on the wire is left
  /// out, with a report.  Returns what was left out.
  std::vector<HeaderFault> encodeToFrame(
      Writer& out, const HeaderEncodingFilter& filter = HeaderEncodingFilter()) const;
  /// Adds the headers of a whole block.  One that cannot be decoded is left out, with a report, by
  /// its field size; one whose length is broken ends the block.  Returns what was left out.
  std::vector<HeaderFault> decodeFromFrame(Reader& in,
                                           RepeatedHeaders repeated = RepeatedHeaders::joined);

 private:
  [[nodiscard]] const CodePage* knownPage(std::uint8_t number) const noexcept;

  std::vector<Header> headers_;
  std::vector<std::shared_ptr<const CodePage>> pages_;
};

}  // namespace WapStack

#endif  // MMSBRIX_WSP_WSP_HEADER_LIST_H
