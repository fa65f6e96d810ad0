// The page of `preview`: one self-contained HTML document that pages through a message's slides.
#ifndef MMSBRIX_TOOLS_PREVIEW_PAGE_H
#define MMSBRIX_TOOLS_PREVIEW_PAGE_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mmsbrix::tool {

/// A place on the stage in pixels.
struct PreviewBox {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};

/// One medium of a slide.
struct PreviewItem {
  std::string mediaType;
  std::string name;                 ///< for people
  std::string octets;               ///< of a picture, sound or film
  std::optional<std::string> text;  ///< UTF-8, of a text
  std::optional<PreviewBox> box;    ///< without one it stands below what came before
  bool fill = false;                ///< stretch to the box instead of keeping the proportions
};

struct PreviewSlide {
  std::vector<PreviewItem> items;
  int milliseconds = 0;  ///< 0 when the presentation does not say
};

struct PreviewPage {
  std::string title;
  std::vector<std::pair<std::string, std::string>> fields;  ///< shown above the slides
  int width = 0;  ///< of the stage in pixels, 0 for none laid down
  int height = 0;
  std::string background;  ///< "#RRGGBB", else white
  std::vector<PreviewSlide> slides;
  std::vector<PreviewItem> others;  ///< parts that no slide shows
  std::vector<std::string> notes;
};

/// The document.  Whatever is in `page`, nothing of it becomes active: texts are escaped, only
/// pictures, sounds and films that browsers draw by themselves are embedded, there is no script,
/// and the page's own content security policy forbids any, as well as every address outside the
/// page.
[[nodiscard]] std::string renderPreview(const PreviewPage& page);

/// Text for HTML, in content and in quoted attributes.
[[nodiscard]] std::string escapeHtml(std::string_view text);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_PREVIEW_PAGE_H
