/// @file
/// Telling the host that SMIL text could not be read.
#ifndef MMSBRIX_SMIL_PARSE_ERROR_H
#define MMSBRIX_SMIL_PARSE_ERROR_H

#include <functional>
#include <string>

#include "../export.h"

namespace mmsbrix {

/// Receives "Error on line 3, position 14" (both count from 1; 0 for the document as a whole) and
/// the reason, in UTF-8.
using ParseErrorHandler =
    std::function<void(const std::string& caption, const std::string& reason)>;

/// Replaces the handler of the process, which is called on the thread that reads; it may read other
/// texts and set a handler.  Without one, the default, a message box is shown on platforms that
/// have them, and nothing happens on others.
MMSBRIX_API void setParseErrorHandler(ParseErrorHandler handler);

}  // namespace mmsbrix

#endif  // MMSBRIX_SMIL_PARSE_ERROR_H
