/// @file
/// Which part of a message a presentation's media refer to, in all the ways that peers have of
/// saying so.
#ifndef MMSBRIX_CONVERT_REFERENCES_H
#define MMSBRIX_CONVERT_REFERENCES_H

#include <vector>

#include "../export.h"
#include "../model/mmsg.h"
#include "../smil/smil.h"

namespace mmsbrix {

/// A media element and the part that it shows.
struct MediaReference {
  CSMILMedia* media = nullptr;  ///< the tree's own
  CMMPart* part = nullptr;      ///< null when the message has none such: the reference dangles
};

/// How a presentation and the parts of its message belong together.
struct References {
  std::vector<MediaReference> media;  ///< in document order; elements without `src` are left out
  std::vector<CMMPart*> unmentioned;  ///< parts that no element shows, the presentation aside
};

/// The part that holds a message's presentation: the one that `start` names, with angle brackets or
/// without, else the first of type application/smil.  Null without one.
MMSBRIX_API CMMPart* findPresentation(CMMsg& message);

/// Resolves every media element of a presentation.  A "cid:" URL means a Content-ID first; whatever
/// a `src` says can also be a Content-Location, a `name` or `filename` parameter, or their last
/// path part.  Letters may be in any case, angle brackets may stand or be missing, escapes are
/// resolved. The pointers live as long as tree and message stay as they are.
MMSBRIX_API References resolveReferences(CSMIL& smil, CMMsg& message);

}  // namespace mmsbrix

#endif  // MMSBRIX_CONVERT_REFERENCES_H
