// Headers as text and as octets, one row per case, for every code of the header table and every
// parameter.  The same rows are given to a packet dissector in the interop tests.
// Sources: WAP-230 8.4.2 and its examples; the rest was checked against that dissector.
#ifndef MMSBRIX_TESTS_WSP_HEADER_VECTORS_H
#define MMSBRIX_TESTS_WSP_HEADER_VECTORS_H

#include <array>

#include "wsp/header_block.h"

namespace mmsbrix::test {

inline constexpr auto v11 = EncodingVersion::v1_1;
inline constexpr auto v12 = EncodingVersion::v1_2;
inline constexpr auto v13 = EncodingVersion::v1_3;
inline constexpr auto v14 = EncodingVersion::v1_4;
inline constexpr auto v15 = EncodingVersion::v1_5;

/// A header that encodes to the octets under the version, and reads back from them as it was.
struct HeaderVector {
  EncodingVersion version;
  const char* name;
  const char* value;
  const char* octets;
  /// What the dissector shows behind the name, or the whole line, one for each header; null where
  /// that is the value itself, "" where it does not take the value apart or is wrong about it.  One
  /// that ends in "..." is the beginning of it.
  const char* shown = nullptr;
};
/// In place of what is shown: the dissector has no such form and calls every one of it invalid.
inline constexpr const char* kUndissected = "(no such form)";

// clang-format off
inline constexpr auto kHeaderVectors = std::to_array<HeaderVector>({
    // 00 Accept
    {v11, "Accept", "*/*", "80 80"},
    {v11, "Accept", "application/smil", "80 'application/smil' 00"},
    {v14, "Accept", "application/vnd.wap.mms-message; q=0.5", "80 03 BE 80 33",
     "application/vnd.wap.mms-message; q=0.50"},
    {v12, "Accept", "application/vnd.wap.mms-message", "80 'application/vnd.wap.mms-message' 00"},
    {v11, "Accept", "application/vnd.uplanet.signal", "80 03 02 02 02"},
    {v11, "Accept", "text/html; Level=1; q=0.333; ext=5", "80 0B 82 82 9F 80 83 31 'ext' 00 85",
     "text/html; level=1.15; q=0.333; ext=5"},
    // 01, 3B Accept-Charset
    {v11, "Accept-Charset", "utf-8", "81 EA"},
    {v13, "Accept-Charset", "*", "BB 80"},
    {v13, "Accept-Charset", "big5", "BB 03 02 07 EA"},
    {v13, "Accept-Charset", "x-mine; q=0.7", "BB 08 'x-mine' 00 47", "x-mine; q=0.70"},
    {v13, "Accept-Charset", "*; q=0", "BB 02 80 01", "*; q=0.00"},
    // 02, 3C Accept-Encoding
    {v11, "Accept-Encoding", "Gzip", "82 80"},
    {v13, "Accept-Encoding", "Deflate", "BC 82"},
    {v13, "Accept-Encoding", "x-zip", "BC 'x-zip' 00"},
    {v13, "Accept-Encoding", "*; q=0.5", "BC 02 83 33", "*; q=0.50"},
    {v13, "Accept-Encoding", "*", "BC 01 83"},
    // 03 Accept-Language
    {v11, "Accept-Language", "en; q=0.7", "83 02 99 47", "english (en); q=0.70"},
    {v11, "Accept-Language", "en", "83 99", "English (en)"},
    {v11, "Accept-Language", "*", "83 80"},
    {v11, "Accept-Language", "en-US", "83 'en-US' 00"},
    {v11, "Accept-Language", "fo", "83 02 01 82", "Faeroese (fo)"},  // a number that fits no short-integer
    // 04 Accept-Ranges
    {v11, "Accept-Ranges", "None", "84 80"},
    {v11, "Accept-Ranges", "pages", "84 'pages' 00"},
    // 05 Age
    {v11, "Age", "10", "85 8A", "10 seconds"},
    {v11, "Age", "86400", "85 03 01 51 80", "86400 seconds"},
    // 06 Allow
    {v11, "Allow", "GET", "86 C0"},
    // 07 Authorization
    {v11, "Authorization", "Basic dXNlcjpwYXNz", "87 0B 80 'user' 00 'pass' 00",
     "basic; user-id=user; password=pass"},
    {v11, "Authorization", "Digest username=\"u v\", nc=00000001",
     "87 1F 21 'Digest' 00 'username' 00 22 'u v' 00 'nc' 00 '00000001' 00",
     "Digest; username=\"u v\"; nc=00000001"},
    // 08, 3D, 47 Cache-Control
    {v11, "Cache-Control", "No-cache", "88 80"},
    {v13, "Cache-Control", "Max-age=10", "BD 02 82 8A", "max-age=10 seconds"},
    {v14, "Cache-Control", "Max-stale", "C7 83"},
    {v14, "Cache-Control", "Max-stale=300", "C7 04 83 02 01 2C", "max-stale=300 seconds"},
    {v14, "Cache-Control", "No-cache=\"Set-Cookie, X-Foo\"", "C7 08 80 C1 'X-Foo' 00",
     "no-cache..."},
    {v14, "Cache-Control", "S-maxage=60", "C7 02 8B BC", "s-max-age=60 seconds"},
    {v14, "Cache-Control", "community=\"UCI\"", "C7 0F 'community' 00 22 'UCI' 00", ""},
    {v14, "Cache-Control", "x-fast", "C7 'x-fast' 00"},
    // 09 to 10
    {v11, "Connection", "Close", "89 80"},
    {v11, "Connection", "keep-alive", "89 'keep-alive' 00"},
    {v11, "Content-Base", "http://a/", "8A 'http://a/' 00"},
    {v11, "Content-Encoding", "Gzip", "8B 80"},
    {v11, "Content-Language", "fi", "8C 9F", "Finnish (fi)"},
    {v11, "Content-Language", "kl", "8C 01 8A", ""},
    {v11, "Content-Length", "300", "8D 02 01 2C"},
    {v11, "Content-Location", "a.smil", "8E 'a.smil' 00"},
    {v11, "Content-MD5", "AAECAwQFBgcICQoLDA0ODw==",
     "8F 10 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F", "000102030405060708090a0b0c0d0e0f"},
    {v11, "Content-Range", "bytes 0-*/1025", "90 03 00 88 01",
     "first-byte-pos=0; entity-length=1025"},
    {v13, "Content-Range", "bytes 500-*/*", "BE 03 83 74 80",
     "first-byte-pos=500; entity-length=unknown"},
    // 11 Content-Type and the parameters
    {v11, "Content-Type", "text/plain; Charset=utf-8", "91 03 83 81 EA"},
    {v11, "Content-Type", "text/plain; Charset=*", "91 03 83 81 80"},
    {v11, "Content-Type", "a/b; Level=1.2; Type=7", "91 08 'a/b' 00 82 92 83 87"},
    {v11, "Content-Type", "a/b; 0x04=x", "91 07 'a/b' 00 84 'x' 00", "a/b"},
    {v12, "Content-Type", "image/jpeg; Name=a.jpg; Filename=\"b c.jpg\"",
     "91 11 9E 85 'a.jpg' 00 86 'b c.jpg' 00", "image/jpeg; Name=a.jpg; Filename=b c.jpg"},
    {v12, "Content-Type", "a/b; Differences=Date; Padding=3", "91 08 'a/b' 00 87 92 88 83", "a/b"},
    {v15, "Content-Type", "a/b; Differences=Expect", "91 06 'a/b' 00 87 C8", "a/b"},
    {v12, "Content-Type", "multipart/related; Type=\"application/vnd.uplanet.signal\"",
     "91 1F 32 'multipart/related' 00 89 'application/vnd.uplanet.signal' 00",
     "multipart/related; type=application/vnd.uplanet.signal"},
    {v12, "Content-Type",
     "application/vnd.wap.multipart.related; Type=\"application/smil\"; Start=\"<a>\"; "
     "Start-info=x", "91 1B B3 89 'application/smil' 00 8A '<a>' 00 8B 'x' 00",
     "application/vnd.wap.multipart.related; type=application/smil; Start=<a>; Start-info=x"},
    {v12, "Content-Type", "multipart/related; Type=\"text/html\"",
     "91 14 'multipart/related' 00 89 82", "multipart/related"},
    {v14, "Content-Type", "application/vnd.wap.connectivity-wbxml; SEC=1; MAC=ABC",
     "91 08 B6 91 81 92 'ABC' 00",
     "application/vnd.wap.connectivity-wbxml; SEC=USERPIN; MAC=ABC"},
    {v14, "Content-Type", "application/vnd.wap.multipart.related; Start=\"<a>\"; Start-info=x",
     "91 0A B3 99 22 '<a>' 00 9A 'x' 00",
     "application/vnd.wap.multipart.related; Start=\"<a>; Start-info=x"},
    {v14, "Content-Type", "a/b; Name=\"a b\"; ext; x=\"\"; y=5; z=\"5\"",
     "91 1B 'a/b' 00 97 22 'a b' 00 'ext' 00 00 'x' 00 22 00 'y' 00 85 'z' 00 22 '5' 00",
     "a/b; Name=\"a b; ext=; x=\"; y=5; z=\"5\""},
    {v13, "Content-Type", "a/b; Comment=c; Domain=d; Max-Age=60; Path=\"/x\"; Secure",
     "91 12 'a/b' 00 8C 'c' 00 8D 'd' 00 8E BC 8F '/x' 00 90 00",
     "a/b; Comment=c; Domain=d"},
    {v14, "Content-Type", "a/b; Comment=c; Domain=\"d e\"; Path=\"/x\"",
     "91 12 'a/b' 00 9B 'c' 00 9C 22 'd e' 00 9D 22 '/x' 00",
     "a/b; Comment=c; Domain=\"d e; Path=\"/x"},
    {v11, "Content-Type", "", "91 00", "<no media type has been specified>"},
    // 12 to 1E
    {v11, "Date", "Thu, 23 Apr 1998 13:41:37 GMT", "92 04 35 3F 45 11",
     "Apr 23, 1998 13:41:37 UTC"},
    {v11, "Etag", "\"x,y\"", "93 22 'x,y' 22 00"},
    {v11, "Expires", "Thu, 01 Jan 1970 00:00:00 GMT", "94 01 00", "Jan  1, 1970 00:00:00 UTC"},
    {v11, "From", "a@b.c", "95 'a@b.c' 00"},
    {v11, "Host", "a.b", "96 'a.b' 00"},
    {v11, "If-Modified-Since", "Thu, 23 Apr 1998 13:41:37 GMT", "97 04 35 3F 45 11",
     "Apr 23, 1998 13:41:37 UTC"},
    {v11, "If-Match", "\"x\"", "98 22 'x' 22 00"},
    {v11, "If-None-Match", "W/\"x\"", "99 'W/' 22 'x' 22 00"},
    {v11, "If-Range", "\"x\"", "9A 22 'x' 22 00"},
    {v11, "If-Range", "Thu, 23 Apr 1998 13:41:37 GMT", "9A 04 35 3F 45 11",
     "Apr 23, 1998 13:41:37 UTC"},
    {v11, "If-Unmodified-Since", "Thu, 23 Apr 1998 13:41:37 GMT", "9B 04 35 3F 45 11",
     "Apr 23, 1998 13:41:37 UTC"},
    {v11, "Location", "http://a/b", "9C 'http://a/b' 00"},
    {v11, "Last-Modified", "Thu, 23 Apr 1998 13:41:37 GMT", "9D 04 35 3F 45 11",
     "Apr 23, 1998 13:41:37 UTC"},
    {v11, "Max-Forwards", "3", "9E 83"},
    // 1F to 2E
    {v11, "Pragma", "No-cache", "9F 80"},
    {v11, "Pragma", "foo=bar", "9F 08 'foo' 00 'bar' 00", "; foo=bar"},
    {v11, "Proxy-Authenticate", "Basic realm=\"WAP\"", "A0 05 80 'WAP' 00", "basic; realm=WAP"},
    {v11, "Proxy-Authorization", "Basic dTpw", "A1 05 80 'u' 00 'p' 00",
     "basic; user-id=u; password=p"},
    {v11, "Public", "OPTIONS", "A2 C1"},
    {v11, "Public", "PATCH", "A2 'PATCH' 00"},
    {v11, "Range", "bytes=0-499", "A3 04 80 00 83 73",
     "byte-range; first-byte-pos=0; last-byte-pos=499"},
    {v11, "Range", "bytes=9500-", "A3 03 80 CA 1C", "byte-range; first-byte-pos=9500"},
    {v11, "Range", "bytes=-500", "A3 03 81 83 74", "suffix-byte-range..."},
    {v11, "Referer", "http://a/", "A4 'http://a/' 00"},
    {v11, "Retry-After", "120", "A5 02 81 F8", ""},
    {v11, "Retry-After", "Thu, 23 Apr 1998 13:41:37 GMT", "A5 06 80 04 35 3F 45 11", ""},
    {v11, "Server", "x/1 (y, z)", "A6 'x/1 (y, z)' 00"},
    {v11, "Transfer-Encoding", "Chunked", "A7 80"},
    {v11, "Upgrade", "HTTP/2.0", "A8 'HTTP/2.0' 00"},
    {v11, "User-Agent", "\xC3\xA9t\xC3\xA9", "A9 7F C3 A9 't' C3 A9 00", ""},
    {v11, "Vary", "Accept-Language", "AA 83"},
    {v11, "Vary", "*", "AA '*' 00"},
    {v11, "Via", "1.0 fred (a, b)", "AB '1.0 fred (a, b)' 00"},
    {v11, "Warning", "110", "AC 8A", "110 Response is stale"},
    {v11, "Warning", "199 a.b \"odd \\\"x\\\"\"", "AC 0D E3 'a.b' 00 'odd ' 22 'x' 22 00",
     "code=199/299; agent=a.b; text=odd \"x\""},
    {v11, "WWW-Authenticate", "Basic realm=\"a b\"", "AD 05 80 'a b' 00", "basic; realm=a b"},
    {v11, "WWW-Authenticate", "Digest realm=\"r\", nonce=\"n\", stale=true",
     "AD 1D 'Digest' 00 'r' 00 'nonce' 00 22 'n' 00 'stale' 00 'true' 00",
     "Digest; realm=r; nonce=\"n\"; stale=true"},
    {v11, "Content-Disposition", "attachment; Filename=a.txt", "AE 08 81 86 'a.txt' 00"},
    {v14, "Content-Disposition", "form-data; Name=a; Filename=\"b c\"",
     "C5 0A 80 97 'a' 00 98 22 'b c' 00", "form-data; Name=a; Filename=\"b c"},
    {v14, "Content-Disposition",
     "inline; Creation-date=\"Thu, 23 Apr 1998 13:41:37 GMT\"; Modification-date=\"Thu, 01 Jan "
     "1970 00:00:00 GMT\"; Read-date=\"Thu, 01 Jan 1970 00:00:01 GMT\"; Size=300",
     "C5 11 82 93 04 35 3F 45 11 94 01 00 95 01 01 96 02 01 2C", "inline"},
    {v14, "Content-Disposition", "x-own", "C5 06 'x-own' 00", "x-own"},
    // 2F to 37: push and profiles
    {v12, "X-Wap-Application-Id", "x-wap-application:mms.ua", "AF 84"},
    {v12, "X-Wap-Application-Id", "32769", "AF 02 80 01", ""},
    {v12, "X-Wap-Application-Id", "urn:x", "AF 'urn:x' 00"},
    {v12, "X-Wap-Content-URI", "http://a/", "B0 'http://a/' 00", "Content-Uri: http://a/"},
    {v12, "X-Wap-Initiator-URI", "http://a/", "B1 'http://a/' 00", "Initiator-Uri: http://a/"},
    {v12, "Accept-Application", "*", "B2 80", "x-wap-application:*"},
    {v12, "Accept-Application", "x-wap-application:push.sia", "B2 81"},
    {v12, "Bearer-Indication", "11", "B3 8B", "GSM GPRS"},
    {v12, "Push-Flag", "5", "B4 85", "Push-Flag:  (Initiator URI authenticated) (Last push message)"},
    {v12, "Profile", "http://a/p", "B5 'http://a/p' 00"},
    {v12, "Profile-Diff", "AwVqAAU=", "B6 05 03 05 6A 00 05", ""},
    {v12, "Profile-Warning", "102", "B7 92", "102 Not used profile"},
    {v14, "Profile-Warning", "200 http://a/p \"Thu, 23 Apr 1998 13:41:37 GMT\"",
     "C4 11 A0 'http://a/p' 00 04 35 3F 45 11", kUndissected},
    // 38 to 3A
    {v13, "Expect", "100-continue", "B8 80", ""},
    {v15, "Expect", "x=y; p=2", "C8 07 'x' 00 'y' 00 'p' 00 82", ""},
    {v13, "TE", "trailers", "B9 81", "Encoding-Version: trailers"},
    {v13, "TE", "chunked", "B9 01 82", kUndissected},
    {v13, "TE", "gzip; q=0.5", "B9 03 84 80 33", kUndissected},
    {v13, "TE", "x-own", "B9 06 'x-own' 00", "x-own"},
    {v13, "Trailer", "Age", "BA 85"},
    // 3F to 4A
    {v13, "X-Wap-Tod", "", "BF 00", kUndissected},
    {v13, "X-Wap-Tod", "Thu, 23 Apr 1998 13:41:37 GMT", "BF 04 35 3F 45 11",
     "Apr 23, 1998 13:41:37.000000000 UTC"},
    {v13, "Content-ID", "<a>", "C0 22 '<a>' 00", "\"<a>\""},
    {v13, "Content-ID", "<a>\"", "C0 22 '<a>' 22 22 00", "\"<a>\"\""},
    {v13, "Content-ID", "\xC3\xA9", "C0 22 C3 A9 00", ""},
    {v12, "Content-ID", "<a>\"", "'Content-ID' 00 '<a>' 22 00"},
    {v12, "Content-ID", "\"<a>", "'Content-ID' 00 22 '<a>' 00"},
    {v13, "Set-Cookie", "a=b; Version=1; Path=\"/x\"; Max-Age=60; Domain=.b.c; Comment=c; Secure",
     "C1 16 9F 'a' 00 'b' 00 8F '/x' 00 8E BC 8D '.b.c' 00 8C 'c' 00 90 00", ""},
    {v14, "Set-Cookie", "a=\"b\"; Path=\"/x\"; Domain=.b.c; Comment=\"c d\"",
     "C1 19 '0' 00 'a' 00 22 'b' 22 00 9D 22 '/x' 00 9C '.b.c' 00 9B 22 'c d' 00", ""},
    {v13, "Cookie", "$Version=\"1\"; a=b; $Path=\"/x\"; $Domain=\"d\"; c=\"d\"",
     "C2 12 9F 09 'a' 00 'b' 00 '/x' 00 'd' 00 06 'c' 00 22 'd' 22 00", ""},
    {v13, "Cookie", "a=b", "C2 07 '0' 00 04 'a' 00 'b' 00", ""},
    {v13, "Encoding-Version", "1.3", "C3 93"},
    {v13, "Encoding-Version", "16 1.3", "C3 02 90 93", "code-page=16: 1.3"},
    {v13, "Encoding-Version", "16 -", "C3 01 90", "code-page=16"},
    {v14, "X-WAP-Security", "close-subordinate", "C6 80"},
    {v15, "X-Wap-Loc-Invocation", "AQI=", "C9 02 01 02", ""},
    {v15, "X-Wap-Loc-Delivery", "AQI=", "CA 02 01 02", ""},
    // Names without a code, and those with one that is newer than the version.
    {v12, "X-Foo", "a, b", "'X-Foo' 00 'a, b' 00", "a, b"},
    {v12, "Encoding-Version", "1.2", "'Encoding-Version' 00 '1.2' 00"},
    {v11, "Profile", "http://a/p", "'Profile' 00 'http://a/p' 00"},
    {v12, "0x4B", "0x0201FF", "CB 02 01 FF", ""},
    // Values that the binary form cannot hold.
    {v11, "Expires", "-1", "'Expires' 00 '-1' 00"},
    {v11, "Age", "010", "'Age' 00 '010' 00"},
    {v11, "Allow", "GET, FOO", "'Allow' 00 'GET, FOO' 00"},
    {v11, "Authorization", "Bearer a.b-c", "'Authorization' 00 'Bearer a.b-c' 00", "Bearer a.b-c"},
    {v11, "Authorization", "Basic dToBcA==", "'Authorization' 00 'Basic dToBcA==' 00"},
    {v11, "Authorization", "Basic dTp/cA==", "'Authorization' 00 'Basic dTp/cA==' 00"},
    {v11, "Authorization", "Basic dTpwcB==", "'Authorization' 00 'Basic dTpwcB==' 00"},
    {v11, "Accept-Language", "en; level=1", "'Accept-Language' 00 'en; level=1' 00"},
    {v11, "Cache-Control", "Max-age", "'Cache-Control' 00 'Max-age' 00"},
    {v11, "Range", "bytes=0-1,3-4", "'Range' 00 'bytes=0-1,3-4' 00"},
    {v12, "Push-Flag", "200", "'Push-Flag' 00 '200' 00"},
    {v11, "Content-MD5", "AAEC", "'Content-MD5' 00 'AAEC' 00"},
    // Comma lists.
    {v11, "Accept", "text/html, image/png; q=0.5", "80 82 80 03 A0 80 33",
     "text/html\nimage/png; q=0.50"},
    {v11, "Vary", "Age, \x58-Foo", "AA 85 AA 'X-Foo' 00", ""},
    {v11, "WWW-Authenticate", "Basic realm=\"a, b\", Digest realm=\"c\", qop=auth",
     "AD 06 80 'a, b' 00 AD 12 'Digest' 00 'c' 00 'qop' 00 'auth' 00",
     "basic; realm=a, b\nDigest; realm=c; qop=auth"},
    {v11, "WWW-Authenticate", "Basic realm=\"a\", Negotiate",
     "AD 03 80 'a' 00 'WWW-Authenticate' 00 'Negotiate' 00", "basic; realm=a\nNegotiate"},
});
// clang-format on

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_WSP_HEADER_VECTORS_H
