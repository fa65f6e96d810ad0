// The well-known headers, one row each: code, encoding version, name, value format, and whether a
// comma separates elements that travel as headers of their own.  [WAP-230 8.4.2, Appendix A, table
// 39]
#ifndef MMSBRIX_WSP_HEADER_TABLE_H
#define MMSBRIX_WSP_HEADER_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "wsp/header_formats.h"
#include "wsp/wsp_assigned_headers.h"

namespace WapStack {

/// How the text of a header is taken apart into the values of repeated headers.  [RFC 2616 4.2]
enum class ListRule : std::uint8_t {
  single,      ///< not at all
  elements,    ///< at its commas
  challenges,  ///< at the commas ahead of a new scheme
};

struct HeaderRow {
  std::uint8_t code;
  Version from;  ///< the encoding version that assigns the code
  std::string_view name;
  const ValueFormat& format;
  ListRule list = ListRule::single;
  bool secret = false;  ///< the value is masked where people read it
};

inline constexpr std::size_t kHeaderCodes = 0x4B;  ///< codes below this one have a row

namespace detail {
using WapAssignments::kVersion11, WapAssignments::kVersion12, WapAssignments::kVersion13,
    WapAssignments::kVersion14, WapAssignments::kVersion15;
constexpr auto kList = ListRule::elements;
constexpr auto kChallenges = ListRule::challenges;
}  // namespace detail

/// Indexed by code.
// clang-format off
inline constexpr auto kHeaderTable = [] {
  using namespace detail;
  return std::to_array<HeaderRow>({
    {0x00, kVersion11, "Accept", kMediaFormat, kList},
    {0x01, kVersion11, "Accept-Charset", kAcceptCharsetFormat, kList},
    {0x02, kVersion11, "Accept-Encoding", kAcceptEncodingFormat, kList},
    {0x03, kVersion11, "Accept-Language", kAcceptLanguageFormat, kList},
    {0x04, kVersion11, "Accept-Ranges", kAcceptRangesFormat, kList},
    {0x05, kVersion11, "Age", kIntegerFormat},
    {0x06, kVersion11, "Allow", kMethodFormat, kList},
    {0x07, kVersion11, "Authorization", kCredentialsFormat, ListRule::single, true},
    {0x08, kVersion11, "Cache-Control", kCacheControlFormat, kList},
    {0x09, kVersion11, "Connection", kConnectionFormat, kList},
    {0x0A, kVersion11, "Content-Base", kTextFormat},
    {0x0B, kVersion11, "Content-Encoding", kContentEncodingFormat, kList},
    {0x0C, kVersion11, "Content-Language", kLanguageFormat, kList},
    {0x0D, kVersion11, "Content-Length", kIntegerFormat},
    {0x0E, kVersion11, "Content-Location", kTextFormat},
    {0x0F, kVersion11, "Content-MD5", kDigestFormat},
    {0x10, kVersion11, "Content-Range", kContentRangeFormat},
    {0x11, kVersion11, "Content-Type", kMediaFormat},
    {0x12, kVersion11, "Date", kDateFormat},
    {0x13, kVersion11, "Etag", kTextFormat},
    {0x14, kVersion11, "Expires", kDateFormat},
    {0x15, kVersion11, "From", kTextFormat},
    {0x16, kVersion11, "Host", kTextFormat},
    {0x17, kVersion11, "If-Modified-Since", kDateFormat},
    {0x18, kVersion11, "If-Match", kTextFormat, kList},
    {0x19, kVersion11, "If-None-Match", kTextFormat, kList},
    {0x1A, kVersion11, "If-Range", kDateOrTextFormat},
    {0x1B, kVersion11, "If-Unmodified-Since", kDateFormat},
    {0x1C, kVersion11, "Location", kTextFormat},
    {0x1D, kVersion11, "Last-Modified", kDateFormat},
    {0x1E, kVersion11, "Max-Forwards", kIntegerFormat},
    {0x1F, kVersion11, "Pragma", kPragmaFormat, kList},
    {0x20, kVersion11, "Proxy-Authenticate", kChallengeFormat, kChallenges},
    {0x21, kVersion11, "Proxy-Authorization", kCredentialsFormat, ListRule::single, true},
    {0x22, kVersion11, "Public", kMethodOrTokenFormat, kList},
    {0x23, kVersion11, "Range", kRangeFormat},
    {0x24, kVersion11, "Referer", kTextFormat},
    {0x25, kVersion11, "Retry-After", kRetryAfterFormat},
    {0x26, kVersion11, "Server", kTextFormat},
    {0x27, kVersion11, "Transfer-Encoding", kTransferEncodingFormat, kList},
    {0x28, kVersion11, "Upgrade", kTextFormat, kList},
    {0x29, kVersion11, "User-Agent", kTextFormat},
    {0x2A, kVersion11, "Vary", kFieldNameFormat, kList},
    {0x2B, kVersion11, "Via", kTextFormat, kList},
    {0x2C, kVersion11, "Warning", kWarningFormat, kList},
    {0x2D, kVersion11, "WWW-Authenticate", kChallengeFormat, kChallenges},
    {0x2E, kVersion11, "Content-Disposition", kContentDispositionFormat},
    {0x2F, kVersion12, "X-Wap-Application-Id", kApplicationFormat},
    {0x30, kVersion12, "X-Wap-Content-URI", kTextFormat},
    {0x31, kVersion12, "X-Wap-Initiator-URI", kTextFormat},
    {0x32, kVersion12, "Accept-Application", kAcceptApplicationFormat, kList},
    {0x33, kVersion12, "Bearer-Indication", kIntegerFormat},
    {0x34, kVersion12, "Push-Flag", kShortIntegerFormat},
    {0x35, kVersion12, "Profile", kTextFormat},
    {0x36, kVersion12, "Profile-Diff", kOctetsFormat},
    {0x37, kVersion12, "Profile-Warning", kProfileWarningFormat, kList},
    {0x38, kVersion13, "Expect", kExpectFormat, kList},
    {0x39, kVersion13, "TE", kTeFormat, kList},
    {0x3A, kVersion13, "Trailer", kFieldNameFormat, kList},
    {0x3B, kVersion13, "Accept-Charset", kAcceptCharsetFormat, kList},
    {0x3C, kVersion13, "Accept-Encoding", kAcceptEncodingFormat, kList},
    {0x3D, kVersion13, "Cache-Control", kCacheControlFormat, kList},
    {0x3E, kVersion13, "Content-Range", kContentRangeFormat},
    {0x3F, kVersion13, "X-Wap-Tod", kDateFormat},
    {0x40, kVersion13, "Content-ID", kQuotedTextFormat},
    {0x41, kVersion13, "Set-Cookie", kSetCookieFormat},
    {0x42, kVersion13, "Cookie", kCookieFormat},
    {0x43, kVersion13, "Encoding-Version", kVersionFormat},
    {0x44, kVersion14, "Profile-Warning", kProfileWarningFormat, kList},
    {0x45, kVersion14, "Content-Disposition", kContentDispositionFormat},
    {0x46, kVersion14, "X-WAP-Security", kSecurityFormat},
    {0x47, kVersion14, "Cache-Control", kCacheControlFormat, kList},
    {0x48, kVersion15, "Expect", kExpectFormat, kList},
    {0x49, kVersion15, "X-Wap-Loc-Invocation", kOctetsFormat},
    {0x4A, kVersion15, "X-Wap-Loc-Delivery", kOctetsFormat},
  });
}();
// clang-format on
static_assert(kHeaderTable.size() == kHeaderCodes);

/// The row of a code; null for one that is not assigned.
[[nodiscard]] const HeaderRow* findHeader(std::size_t code) noexcept;
/// The first row of a name in any case, whatever its version; null without one.
[[nodiscard]] const HeaderRow* findHeader(std::string_view name) noexcept;
/// Of the rows of a name the one of the newest version up to `version`; null without one.
[[nodiscard]] const HeaderRow* chooseHeader(std::string_view name, Version version) noexcept;

}  // namespace WapStack

#endif  // MMSBRIX_WSP_HEADER_TABLE_H
