/// @file
/// Slides to a presentation that every phone shows.
#ifndef MMSBRIX_CONVERT_SLIDES_H
#define MMSBRIX_CONVERT_SLIDES_H

#include <chrono>
#include <span>
#include <string>

#include "../export.h"
#include "../smil/smil.h"

namespace mmsbrix {

/// What is shown at the same time.  What is empty is left out.
struct Slide {
  std::string text;                          ///< the text itself, UTF-8
  std::string image;                         ///< path of a picture; a video's is fine too
  std::string audio;                         ///< path of a sound
  std::chrono::milliseconds duration{5000};  ///< how long it is shown
};

/// Size of the screen that slides are laid out for, in pixels.
struct ScreenSize {
  int width = 320;   ///< pixels
  int height = 240;  ///< pixels
};

/// Makes `smil` the presentation of those slides: a root layout, the regions "Image" and "Text" one
/// above the other as far as slides have use for them, and one `par` for each slide.  Pictures and
/// sounds refer to their files, texts are content of their elements, so that `MMS_SmilToMMS` makes
/// a message of it.  A duration of zero or less is not stated.
MMSBRIX_API void buildSlides(std::span<const Slide> slides, CSMIL& smil,
                             const ScreenSize& screen = {});

}  // namespace mmsbrix

#endif  // MMSBRIX_CONVERT_SLIDES_H
