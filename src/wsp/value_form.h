/// @file
/// How the value of a header field stands on the wire.  [WAP-230 8.4.1.2]
#ifndef MMSBRIX_WSP_VALUE_FORM_H
#define MMSBRIX_WSP_VALUE_FORM_H

namespace mmsbrix {

/// Told by the first octet of the value.
enum class ValueForm {
  none,            ///< no octet of it is there
  shortInteger,    ///< one octet, 0x80 and above
  lengthPrefixed,  ///< 1 to 31: a value-length or a long-integer, then that many octets
  text,            ///< characters up to a zero octet; a zero at once is the empty text
};

}  // namespace mmsbrix

#endif  // MMSBRIX_WSP_VALUE_FORM_H
