// Rows of the character sets, the PDU types and methods, and the keywords of single headers, whose
// codes include the short-integer bit; and the texts of HTTP status numbers.
// [WAP-230 8.4.2, Appendix A, tables 34 and 42]
#ifndef MMSBRIX_WSP_WSP_ASSIGNED_KEYWORDS_H
#define MMSBRIX_WSP_WSP_ASSIGNED_KEYWORDS_H

#include <array>

#include "wsp/wsp_assigned_headers.h"

namespace WapAssignments {

/// Character sets with their IANA MIBenum numbers; of several aliases the first is printed.
// clang-format off
inline constexpr auto kCharsetRows = std::to_array<StringInt>({
    {"big5", 2026},
    {"iso-10646-ucs-2", 1000},
    {"iso-8859-1", 4}, {"latin1", 4}, {"latin-1", 4},
    {"iso-8859-2", 5}, {"latin2", 5}, {"latin-2", 5},
    {"iso-8859-3", 6}, {"latin3", 6}, {"latin-3", 6},
    {"iso-8859-4", 7}, {"latin4", 7}, {"latin-4", 7},
    {"iso-8859-5", 8},
    {"iso-8859-6", 9},
    {"iso-8859-7", 10},
    {"iso-8859-8", 11},
    {"iso-8859-9", 12}, {"latin5", 12}, {"latin-5", 12},
    {"iso-8859-10", 13}, {"latin6", 13}, {"latin-6", 13},
    {"iso-8859-13", 109},
    {"iso-8859-14", 110}, {"latin8", 110}, {"latin-8", 110},
    {"iso-8859-15", 111}, {"latin9", 111}, {"latin-9", 111},
    {"iso-8859-16", 112}, {"latin10", 112}, {"latin-10", 112},
    {"shift_JIS", 17},
    {"EUC-JP", 18},
    {"ISO-2022-JP", 39},
    {"ISO-2022-CN", 104},
    {"GB2312", 2025},
    {"us-ascii", 3},
    {"utf-8", 106},
    {"utf-16", 1015},
});
// clang-format on
static_assert(kCharsetRows.size() == 42);

/// Content-Encoding keywords.
inline constexpr auto kContentEncodingRows = std::to_array<StringInt>({
    {"Gzip", 0x80},
    {"Compress", 0x81},
    {"Deflate", 0x82},
});
static_assert(kContentEncodingRows.size() == 3);

/// Accept-Ranges keywords.
inline constexpr auto kAcceptRangeRows = std::to_array<StringInt>({
    {"None", 0x80},
    {"Bytes", 0x81},
});
static_assert(kAcceptRangeRows.size() == 2);

/// PDU types and methods, ended by a row without name.
inline constexpr auto kPduTypeRows = std::to_array<StringInt>({
    {"Connect", 0x01},
    {"ConnectReply", 0x02},
    {"Redirect", 0x03},
    {"Reply", 0x04},
    {"Disconnect", 0x05},
    {"Push", 0x06},
    {"ConfirmedPush", 0x07},
    {"Suspend", 0x08},
    {"Resume", 0x09},
    {"GET", 0x40},
    {"OPTIONS", 0x41},
    {"HEAD", 0x42},
    {"DELETE", 0x43},
    {"TRACE", 0x44},
    {"POST", 0x60},
    {"PUT", 0x61},
    {nullptr, 0},
});
static_assert(kPduTypeRows.size() == 17);

/// Cache-Control directives.
inline constexpr auto kCacheControlRows = std::to_array<StringInt>({
    {"No-cache", 0x80},
    {"No-store", 0x81},
    {"Max-age", 0x82},
    {"Max-stale", 0x83},
    {"Min-fresh", 0x84},
    {"Only-if-cached", 0x85},
    {"Public", 0x86},
    {"Private", 0x87},
    {"No-transform", 0x88},
    {"Must-revalidate", 0x89},
    {"Proxy-revalidate", 0x8A},
    {"S-maxage", 0x8B},
});
static_assert(kCacheControlRows.size() == 12);

/// Connection keywords.
inline constexpr auto kConnectionRows = std::to_array<StringInt>({
    {"Close", 0x80},
});
static_assert(kConnectionRows.size() == 1);

/// Transfer-Encoding keywords.
inline constexpr auto kTransferEncodingRows = std::to_array<StringInt>({
    {"Chunked", 0x80},
});
static_assert(kTransferEncodingRows.size() == 1);

/// TE keywords.
inline constexpr auto kTeRows = std::to_array<StringInt>({
    {"trailers", 0x81},
    {"chunked", 0x82},
    {"identity", 0x83},
    {"gzip", 0x84},
    {"compress", 0x85},
    {"deflate", 0x86},
});
static_assert(kTeRows.size() == 6);

/// Expect keywords.
inline constexpr auto kExpectRows = std::to_array<StringInt>({
    {"100-continue", 0x80},
});
static_assert(kExpectRows.size() == 1);

/// X-WAP-Security keywords.
inline constexpr auto kSecurityRows = std::to_array<StringInt>({
    {"close-subordinate", 0x80},
});
static_assert(kSecurityRows.size() == 1);

/// One status text; the number stands first.
struct IntString {
  int number;
  const char* text;
};

/// Texts of HTTP status numbers for logs.
inline constexpr auto kStatusRows = std::to_array<IntString>({
    {100, "Continue"},
    {101, "Switching Protocols"},
    {200, "OK"},
    {201, "Created"},
    {202, "Accepted"},
    {203, "Non-Authoritative Information"},
    {204, "No Content"},
    {205, "Reset Content"},
    {206, "Partial Content"},
    {300, "Multiple Choices"},
    {301, "Moved Permanently"},
    {302, "Moved temporarily"},
    {303, "See Other"},
    {304, "Not modified"},
    {305, "Use Proxy"},
    {307, "Temporary Redirect"},
    {400, "Bad Request - server could not understand request"},
    {401, "Unauthorized"},
    {402, "Payment required"},
    {403, "Forbidden - operation is understood but refused"},
    {404, "Not Found"},
    {405, "Method not allowed"},
    {406, "Not Acceptable"},
    {407, "Proxy Authentication required"},
    {408, "Request Timeout"},
    {409, "Conflict"},
    {410, "Gone"},
    {411, "Length Required"},
    {412, "Precondition failed"},
    {413, "Requested entity too large"},
    {414, "Request-URI too large"},
    {415, "Unsupported media type"},
    {416, "Requested Range Not Satisfiable"},
    {417, "Expectation Failed"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Timeout"},
    {505, "HTTP version not supported"},
});
static_assert(kStatusRows.size() == 40);

}  // namespace WapAssignments

#endif  // MMSBRIX_WSP_WSP_ASSIGNED_KEYWORDS_H
