// The value formats of the well-known headers.  Each is written once, both ways: the octets of a
// value, and the text that HTTP writes for it.  [WAP-230 8.4.2]
//
// Common to all formats, and handled above them: a single zero octet is the empty text, and a text
// on the wire stands for itself whatever the format.
#ifndef MMSBRIX_WSP_HEADER_FORMATS_H
#define MMSBRIX_WSP_HEADER_FORMATS_H

#include <string>
#include <string_view>

#include "wsp/octets.h"
#include "wsp/wsp_assigned_headers.h"

namespace WapStack {

using mmsbrix::Reader;
using mmsbrix::Writer;
using WapAssignments::Version;

struct ValueFormat {
  /// Reads a value that `in` holds exactly; false when it is none of this format.  What is left
  /// unread makes the value undecodable too.
  bool (*decode)(Reader& in, std::string& text);
  /// Writes `text`, which is not empty, with codes up to `version`; false, whatever has been
  /// written, when this format cannot hold it.
  bool (*encode)(std::string_view text, Version version, Writer& out);
  /// True for a format that reads texts on the wire in its own way.
  bool readsTexts = false;
};

// Texts and numbers.
extern const ValueFormat kTextFormat;          ///< text-string, uri-value
extern const ValueFormat kQuotedTextFormat;    ///< quoted-string, in text without its marks
extern const ValueFormat kIntegerFormat;       ///< integer-value, delta-seconds
extern const ValueFormat kShortIntegerFormat;  ///< short-integer
extern const ValueFormat kDateFormat;          ///< date-value
extern const ValueFormat kDateOrTextFormat;    ///< date-value or text-string
extern const ValueFormat kRetryAfterFormat;    ///< a date or seconds
extern const ValueFormat kDigestFormat;        ///< 16 octets, in text base64
extern const ValueFormat kOctetsFormat;        ///< any octets, in text base64
extern const ValueFormat kVersionFormat;       ///< "1.3", or "16 1.3" and "16 -" for a code page
extern const ValueFormat kOpaqueFormat;        ///< any value: its text, or "0x" and its octets

// Names with numbers.
extern const ValueFormat kMethodFormat;  ///< well-known-method
extern const ValueFormat kMethodOrTokenFormat;
extern const ValueFormat kFieldNameFormat;  ///< name of a header
extern const ValueFormat kLanguageFormat;
extern const ValueFormat kAcceptRangesFormat;
extern const ValueFormat kConnectionFormat;
extern const ValueFormat kContentEncodingFormat;
extern const ValueFormat kTransferEncodingFormat;
extern const ValueFormat kSecurityFormat;
extern const ValueFormat kApplicationFormat;        ///< "x-wap-application:mms.ua"
extern const ValueFormat kAcceptApplicationFormat;  ///< the same, or "*" for any

// Names with a quality, "en; q=0.7".
extern const ValueFormat kAcceptCharsetFormat;
extern const ValueFormat kAcceptEncodingFormat;
extern const ValueFormat kAcceptLanguageFormat;
extern const ValueFormat kTeFormat;

// Names with parameters.
extern const ValueFormat kMediaFormat;  ///< content-type-value and accept-value
extern const ValueFormat kContentDispositionFormat;
extern const ValueFormat kPragmaFormat;
extern const ValueFormat kExpectFormat;
extern const ValueFormat kCacheControlFormat;

// Values with a grammar of their own.
extern const ValueFormat kRangeFormat;
/// "bytes 0-*/1025": the wire has no last position.  One that the text has is not sent.
extern const ValueFormat kContentRangeFormat;
extern const ValueFormat kWarningFormat;
extern const ValueFormat kProfileWarningFormat;
extern const ValueFormat kCredentialsFormat;
extern const ValueFormat kChallengeFormat;
extern const ValueFormat kCookieFormat;
extern const ValueFormat kSetCookieFormat;

}  // namespace WapStack

#endif  // MMSBRIX_WSP_HEADER_FORMATS_H
