// What may be sent in binary, and the header code pages that give names to codes.
// [WAP-230 8.4.1.1, 8.4.2.70]
#ifndef MMSBRIX_WSP_WSP_HEADER_FILTER_H
#define MMSBRIX_WSP_WSP_HEADER_FILTER_H

#include <bitset>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "wsp/header_walker.h"
#include "wsp/wsp_header_values.h"

namespace WapStack {

inline constexpr std::uint8_t kDefaultPage = mmsbrix::kFirstPage;

/// What a peer is known to understand in binary: the codes up to an encoding version, save headers
/// taken out, and which code pages.  A header that is not let through goes out as text.
class HeaderEncodingFilter {
 public:
  /// Version 1.2 is what every peer has; all pages are let through.
  explicit HeaderEncodingFilter(Version version = WapAssignments::kVersion12) noexcept
      : version_(version) {}

  [[nodiscard]] Version version() const noexcept { return version_; }
  void setVersion(Version version) noexcept { version_ = version; }
  /// Lets a header through or takes it out, by its code on the default page.  Where an older code
  /// of the same name is let through, that one is sent.
  void allowHeader(std::uint8_t code, bool allowed) noexcept {
    refused_.set(code & 0x7FU, !allowed);
  }
  void allowPage(std::uint8_t page, bool allowed) noexcept { refusedPages_.set(page, !allowed); }
  [[nodiscard]] bool allowsHeader(std::uint8_t code) const noexcept {
    return !refused_.test(code & 0x7FU);
  }
  [[nodiscard]] bool allowsPage(std::uint8_t page) const noexcept {
    return !refusedPages_.test(page);
  }

 private:
  Version version_;
  std::bitset<128> refused_;
  std::bitset<256> refusedPages_;
};

/// A header code page.  On its own it is a page of which nothing but the number is known: its
/// headers are named by their codes, "0x05", and their values are of no known format.  A page with
/// names of its own derives from it.
class CodePage {
 public:
  explicit CodePage(std::uint8_t number) noexcept : number_(number) {}
  CodePage(const CodePage&) = delete;
  CodePage& operator=(const CodePage&) = delete;
  virtual ~CodePage() = default;

  [[nodiscard]] std::uint8_t number() const noexcept { return number_; }
  [[nodiscard]] virtual std::string nameOf(std::uint8_t code) const;
  /// The code to send a name as; nothing when it has none that the filter lets through.
  [[nodiscard]] virtual std::optional<std::uint8_t> codeOf(
      std::string_view name, const HeaderEncodingFilter& filter) const;
  /// A value of the class that the header of that code has.
  [[nodiscard]] virtual std::unique_ptr<Wap_value> valueOf(std::uint8_t code) const;

 private:
  std::uint8_t number_;
};

/// Page 1, the well-known headers.  Codes that are not assigned are named by their numbers.
class DefaultCodePage : public CodePage {
 public:
  DefaultCodePage() noexcept : CodePage(kDefaultPage) {}
  [[nodiscard]] std::string nameOf(std::uint8_t code) const override;
  [[nodiscard]] std::optional<std::uint8_t> codeOf(
      std::string_view name, const HeaderEncodingFilter& filter) const override;
  [[nodiscard]] std::unique_ptr<Wap_value> valueOf(std::uint8_t code) const override;
};

/// A shift to another code page: one octet up to page 31, else a delimiter and the page.
/// [WAP-230 8.4.1.1]
class Shift_sequence {
 public:
  explicit Shift_sequence(std::uint8_t page) noexcept : page_(page) {}
  /// False, with nothing written, for page 0, which does not exist.
  bool encodeToFrame(Writer& out) const noexcept;

 private:
  std::uint8_t page_;
};

}  // namespace WapStack

#endif  // MMSBRIX_WSP_WSP_HEADER_FILTER_H
