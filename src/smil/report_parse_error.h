// The reading side of the parse-error handler.
#ifndef MMSBRIX_SMIL_REPORT_PARSE_ERROR_H
#define MMSBRIX_SMIL_REPORT_PARSE_ERROR_H

#include "platform/xml.h"

namespace mmsbrix {

/// Hands an error to the host's handler, or to the user where the platform can.
void reportParseError(const platform::XmlError& error);

}  // namespace mmsbrix

#endif  // MMSBRIX_SMIL_REPORT_PARSE_ERROR_H
