/// @file
/// Presentations to SMIL text and back, in memory and in files.  [W3C SMIL 2.0; W3C XML 1.0]
#ifndef MMSBRIX_SMIL_SMILCODEC_H
#define MMSBRIX_SMIL_SMILCODEC_H

#include "../export.h"
#include "smil.h"

extern "C" {

/// Reads a SMIL file (UTF-8 or UTF-16, or the encoding that it declares) and adds its attributes
/// and children to what `smil` holds.  1, or 0 with `smil` untouched: when the text is malformed,
/// which the parse-error handler is told, when its outermost element is not "smil", or when there
/// is not enough memory.  Nothing is
/// validated, and elements and attributes of any name are kept; texts and comments become nodes
/// that are not written. Document types and entities outside the file are never loaded.  Documents
/// that are larger, deeper or fuller than any presentation count as malformed.  `flags` selects
/// nothing; pass 0.
MMSBRIX_API int MMS_LoadSmil(const char* path, CSMIL* smil, unsigned long flags);

/// The same from zero-terminated text, UTF-8 or, when it is not that, Windows-1252; what it
/// declares makes no difference.  Replaces what `smil` holds.
MMSBRIX_API int MMS_LoadSmilFromMemory(const char* text, CSMIL* smil, unsigned long flags);

/// Writes a presentation to a file, replacing an existing one, as UTF-8 without declaration.  1, or
/// 0 with the old file kept when that fails, for lack of memory too.  What XML has no name for (an
/// element without a tag, say) is left out with all that is in it; texts that are not valid UTF-8
/// are taken as Windows-1252; the content of media elements is no part of the text.  Moves the
/// child cursors. `flags` selects nothing; pass 0.
MMSBRIX_API int MMS_SaveSmil(CSMIL* smil, const char* path, unsigned long flags);

/// The same text in memory: `*buffer` receives a buffer from malloc that the caller releases with
/// `free` or `MMS_Free`, without a zero at its end, `*length` its length in octets.  Either may be
/// null; without `buffer` the length is still told, but the result is 0, as it is without memory.
/// `flags` selects nothing; pass 0.
MMSBRIX_API int MMS_SaveSmilToMemory(CSMIL* smil, unsigned char** buffer, unsigned int* length,
                                     unsigned long flags);

}  // extern "C"

#endif  // MMSBRIX_SMIL_SMILCODEC_H
