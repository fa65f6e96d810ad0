/// @file
/// Messages to presentations and back.
#ifndef MMSBRIX_CONVERT_MMSCONVERT_H
#define MMSBRIX_CONVERT_MMSCONVERT_H

#include "../export.h"
#include "../model/mmsg.h"
#include "../smil/smil.h"

extern "C" {

/// Reads the presentation of a multipart/related message into `smil` and saves the media of its
/// slides as new files "MMSContent.jpg", "MMSContent #2.jpg" and so on, to which the media elements
/// then point.  `dir` is put before the names as it stands, so it ends in a separator; null stands
/// for the system's temporary folder.
///
/// 0 when the message names no presentation (content type application/vnd.wap.multipart.related
/// with the parameters `type`, "application/smil", and `start`), has no part of that Content-ID, or
/// the part cannot be read.  1 otherwise: media elements whose part is missing or whose file cannot
/// be written stay as they were.
///
/// Text labelled as utf-8 is written as UTF-16 with a mark, and the message's own part holds that
/// from then on, still labelled as utf-8.  `flags` selects nothing; pass 0.
MMSBRIX_API int MMS_MMSToSmil(CMMsg* msg, CSMIL* smil, const char* dir, unsigned long flags);

/// Makes a presentation the body of a message: multipart/related, the presentation first, then one
/// part for each medium.  Its octets are the element's content or else those of the file that `src`
/// names; elements of the same `src` and octets share a part, and those that point to a server, or
/// at nothing, have none.  The media type is the element's `type`, else that of the file's name.
/// Texts are labelled with their charset; text in UTF-16 with a mark becomes UTF-8.
///
/// The body that `msg` had is replaced, its other fields stay, and `smil` is not changed.  1, or 0
/// with `msg` untouched when a file cannot be read.  `flags` selects nothing; pass 0.
MMSBRIX_API int MMS_SmilToMMS(CSMIL* smil, CMMsg* msg, unsigned long flags);

}  // extern "C"

#endif  // MMSBRIX_CONVERT_MMSCONVERT_H
