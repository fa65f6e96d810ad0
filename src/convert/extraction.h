/// @file
/// Every part of a message as a file, and the content of parts as people mean it.
#ifndef MMSBRIX_CONVERT_EXTRACTION_H
#define MMSBRIX_CONVERT_EXTRACTION_H

#include <cstddef>
#include <string>
#include <vector>

#include "../export.h"
#include "../model/mmsg.h"

namespace mmsbrix {

/// A part's content with its transfer encoding (base64, quoted-printable) undone; as it stands when
/// it is not what it claims to be.
MMSBRIX_API std::string decodedContent(const CMMPart& part);
/// The same for a text, as UTF-8, whatever charset it is in.
MMSBRIX_API std::string textContent(const CMMPart& part);

/// How parts are saved.
struct ExtractionOptions {
  bool textToUtf8 =
      false;  ///< save texts and presentations as UTF-8 instead of in their own charset
};

/// Multiparts within each other that are taken apart; a deeper one is saved as it stands.
inline constexpr unsigned kMaxExtractedNesting = 8;
/// Files that one message may ask for.
inline constexpr std::size_t kMaxExtractedFiles = 10000;

/// What became of a part.
struct ExtractedPart {
  std::string mediaType;   ///< as stated, "" when it is not
  std::string contentId;   ///< as it stands
  std::string path;        ///< of the file, "" when there is none
  std::size_t octets = 0;  ///< of the file
  unsigned error = 0;  ///< number of the platform's error (2 file not found, 5 access denied ...)
};

/// Saves every part, of multiparts within multiparts too, as a new file of `folder`, which exists.
/// A name comes from Content-Location, a `name` or `filename` parameter or the Content-ID, made
/// harmless; without any it is "part".  Where it says nothing of the type an extension is added,
/// and a number where the name is taken: nothing that exists is overwritten or followed.  Parts
/// without content have no file.  Without enough memory std::bad_alloc is thrown, and no file is
/// left.
MMSBRIX_API std::vector<ExtractedPart> extractParts(const CMMsg& message, const std::string& folder,
                                                    const ExtractionOptions& options = {});

}  // namespace mmsbrix

#endif  // MMSBRIX_CONVERT_EXTRACTION_H
