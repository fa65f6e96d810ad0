// A presentation as text: UTF-8 without declaration, every start tag on a line of its own, closing
// tags behind the last child, "\r\n", tabs, double quotes.
#ifndef MMSBRIX_SMIL_WRITER_H
#define MMSBRIX_SMIL_WRITER_H

#include <string>

#include "smil/smil.h"

namespace mmsbrix {

/// Start tags are indented by one tab for each level, up to this many; deeper ones stay there, so
/// that the text does not grow with the square of the depth.
inline constexpr unsigned kMaxIndentation = 256;

/// The text of a presentation.  Elements whose tag XML does not allow are left out with all that is
/// in them, as are such attributes.  Texts that are not valid UTF-8 are taken as Windows-1252;
/// characters that XML cannot hold become replacement characters.  Moves the child cursors.
[[nodiscard]] std::string smilText(CSMIL& smil);

}  // namespace mmsbrix

#endif  // MMSBRIX_SMIL_WRITER_H
