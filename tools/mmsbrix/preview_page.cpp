#include "preview_page.h"

#include <mmsbrix/mms/charsets.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>

#include "command.h"

namespace mmsbrix::tool {
namespace {

constexpr int kDefaultSize = 320;

// What browsers draw or play without running anything in it.  SVG and HTML are not among them.
constexpr auto kPictures = std::to_array<std::string_view>(
    {"image/jpeg", "image/png", "image/gif", "image/bmp", "image/webp", "image/x-ms-bmp"});
constexpr auto kSounds =
    std::to_array<std::string_view>({"audio/mpeg", "audio/mp4", "audio/aac", "audio/ogg",
                                     "audio/x-wav", "audio/wav", "audio/webm"});
constexpr auto kFilms =
    std::to_array<std::string_view>({"video/mp4", "video/3gpp", "video/webm", "video/ogg"});

template <std::size_t N>
bool isOneOf(const std::array<std::string_view, N>& types, std::string_view type) {
  return std::ranges::find(types, type) != types.end();
}

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
  }
  return lower;
}

bool isColour(std::string_view text) {
  return text.size() == 7 && text.front() == '#' &&
         std::ranges::all_of(text.substr(1), [](unsigned char c) { return std::isxdigit(c) != 0; });
}

class Renderer {
 public:
  explicit Renderer(const PreviewPage& page) : page_(page) {}

  std::string render() {
    const std::string body = fields() + slides() + others() + notes();
    std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
    html +=
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; "
        "media-src data:; style-src 'nonce-" +
        nonce_ + "'; base-uri 'none'; form-action 'none'\">\n";
    html += "<meta name=\"referrer\" content=\"no-referrer\">\n";
    html += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";
    html += "<title>" + escapeHtml(page_.title) + "</title>\n";
    html += "<style nonce=\"" + nonce_ + "\">\n" + kStyle + rules_ +
            "</style>\n</head>\n<body>\n<main>\n";
    html += "<h1>" + escapeHtml(page_.title) + "</h1>\n" + body + "</main>\n</body>\n</html>\n";
    return html;
  }

 private:
  static constexpr const char* kStyle =
      "body{margin:0;background:#eef0f3;color:#1c2430;font:16px/1.45 system-ui,sans-serif}\n"
      "main{max-width:44rem;margin:2rem auto;padding:0 1rem}\n"
      "h1{font-size:1.3rem;overflow-wrap:anywhere}\n"
      "dl{display:grid;grid-template-columns:max-content 1fr;gap:.15rem 1rem;margin:0 0 1.5rem}\n"
      "dt{color:#5c6675}dd{margin:0;overflow-wrap:anywhere}\n"
      ".deck{background:#fff;border-radius:12px;box-shadow:0 2px 12px "
      "#0002;padding:1rem;overflow:auto}\n"
      ".deck>input{position:absolute;opacity:0;pointer-events:none}\n"
      ".deck label{display:inline-block;min-width:1.6rem;padding:.2rem .5rem;margin:0 .2rem .6rem "
      "0;"
      "border-radius:6px;background:#e3e7ee;text-align:center;cursor:pointer}\n"
      ".slide{display:none}\n"
      ".stage{position:relative;overflow:hidden;margin:0 auto;border:1px solid #d5dae2}\n"
      ".stage>*{position:absolute;margin:0}\n"
      ".flow>*{margin:.4rem 0}\n"
      ".text{white-space:pre-wrap;overflow-wrap:anywhere;overflow:auto}\n"
      "img,video{max-width:100%;object-fit:contain}\n"
      ".stage>img,.stage>video{max-width:none}\n"
      "audio{width:100%;margin-top:.5rem}\n"
      ".other{color:#5c6675;font-size:.9rem}\n"
      "h2{font-size:1rem;margin:1.5rem 0 .4rem}\n"
      "ul{margin:0;padding-left:1.2rem}\n";

  std::string fields() const {
    std::string html = "<dl>\n";
    for (const auto& [name, value] : page_.fields) {
      html += "<dt>" + escapeHtml(name) + "</dt><dd>" + escapeHtml(value) + "</dd>\n";
    }
    return html + "</dl>\n";
  }

  // Radio buttons choose the slide, so paging needs no script.
  std::string slides() {
    if (page_.slides.empty()) return "";
    std::string inputs;
    std::string labels;
    std::string sections;
    for (std::size_t i = 0; i < page_.slides.size(); ++i) {
      const std::string number = std::to_string(i + 1);
      inputs += "<input type=\"radio\" name=\"slide\" id=\"s" + number + "\"" +
                (i == 0 ? " checked" : "") + ">";
      labels += "<label for=\"s" + number + "\">" + number + "</label>";
      rules_ += "#s" + number + ":checked~#slide" + number + "{display:block}\n#s" + number +
                ":checked~nav label:nth-of-type(" + number + "){background:#2f6fed;color:#fff}\n";
      sections += slide(page_.slides[i], number);
    }
    return "<div class=\"deck\">" + inputs + "\n<nav aria-label=\"Slides\">" + labels + "</nav>\n" +
           sections + "</div>\n";
  }

  std::string slide(const PreviewSlide& slide, const std::string& number) {
    std::string placed;
    std::string below;
    for (const PreviewItem& item : slide.items) {
      if (item.box && !isSound(item)) {
        placed += placedItem(item);
      } else {
        below += render(item, "");
      }
    }
    std::string html = "<section class=\"slide\" id=\"slide" + number + "\">\n";
    if (!placed.empty())
      html += "<div class=\"stage " + stageClass() + "\">\n" + placed + "</div>\n";
    if (!below.empty()) html += "<div class=\"flow\">\n" + below + "</div>\n";
    if (slide.milliseconds > 0) {
      char seconds[32];
      std::snprintf(seconds, sizeof seconds, "%.1f s", slide.milliseconds / 1000.0);
      html += "<p class=\"other\">" + std::string(seconds) + "</p>\n";
    }
    return html + "</section>\n";
  }

  // The stage has one size for all slides; its rule is written once.
  std::string stageClass() {
    if (!stageWritten_) {
      stageWritten_ = true;
      const int width = page_.width > 0 ? page_.width : kDefaultSize;
      const int height = page_.height > 0 ? page_.height : kDefaultSize;
      rules_ += ".size{width:" + std::to_string(width) + "px;height:" + std::to_string(height) +
                "px;background:" + (isColour(page_.background) ? page_.background : "#ffffff") +
                "}\n";
    }
    return "size";
  }

  std::string placedItem(const PreviewItem& item) {
    const std::string name = "b" + std::to_string(++boxes_);
    const PreviewBox& box = *item.box;
    std::string rule = "." + name + "{left:" + std::to_string(box.left) +
                       "px;top:" + std::to_string(box.top) + "px";
    if (box.width > 0) rule += ";width:" + std::to_string(box.width) + "px";
    if (box.height > 0) rule += ";height:" + std::to_string(box.height) + "px";
    if (item.fill) rule += ";object-fit:fill";
    rules_ += rule + "}\n";
    return render(item, name);
  }

  static bool isSound(const PreviewItem& item) {
    return !item.text && isOneOf(kSounds, lowerCase(item.mediaType));
  }

  static std::string source(const std::string& type, const PreviewItem& item) {
    return " src=\"data:" + type + ";base64," + toBase64(item.octets) + "\"";
  }

  static std::string render(const PreviewItem& item, const std::string& className) {
    const std::string type = lowerCase(item.mediaType);
    const auto classes = [&](const char* own) {
      std::string all = own;
      if (!className.empty()) {
        if (!all.empty()) all += ' ';
        all += className;
      }
      return all.empty() ? std::string() : " class=\"" + all + "\"";
    };
    const std::string label = escapeHtml(item.name);
    if (item.text) {
      return "<div" + classes("text") + ">" + escapeHtml(*item.text) + "</div>\n";
    }
    if (isOneOf(kPictures, type)) {
      return "<img" + classes("") + " alt=\"" + label + "\"" + source(type, item) + ">\n";
    }
    if (isOneOf(kSounds, type)) {
      return "<audio controls" + classes("") + " title=\"" + label + "\"" + source(type, item) +
             "></audio>\n";
    }
    if (isOneOf(kFilms, type)) {
      return "<video controls" + classes("") + " title=\"" + label + "\"" + source(type, item) +
             "></video>\n";
    }
    return "<p" + classes("other") + ">" + label + " (" + escapeHtml(item.mediaType) + ", " +
           octetCount(item.octets.size()) + ") is not shown here.</p>\n";
  }

  std::string others() const {
    if (page_.others.empty()) return "";
    std::string html = "<h2>" + std::string(page_.slides.empty() ? "Parts" : "Not in any slide") +
                       "</h2>\n<div class=\"flow\">\n";
    for (const PreviewItem& item : page_.others) html += render(item, "");
    return html + "</div>\n";
  }

  std::string notes() const {
    if (page_.notes.empty()) return "";
    std::string html = "<h2>Notes</h2>\n<ul>\n";
    for (const std::string& note : page_.notes) html += "<li>" + escapeHtml(note) + "</li>\n";
    return html + "</ul>\n";
  }

  static std::string newNonce() {
    std::random_device random;
    char text[24];
    std::snprintf(text, sizeof text, "%08x%08x", random(), random());
    return text;
  }

  const PreviewPage& page_;
  const std::string nonce_ = newNonce();
  std::string rules_;
  int boxes_ = 0;
  bool stageWritten_ = false;
};

}  // namespace

std::string escapeHtml(std::string_view text) {
  // Octets that are no UTF-8 are Latin-1 then; what HTML has no place for shows as a question mark.
  const std::string utf8 = toUtf8(text, "").value_or("");
  std::string html;
  html.reserve(utf8.size());
  for (const char c : utf8) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      case '\t':
      case '\n':
        html += c;
        break;
      case '\r':
        break;
      default:
        html += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    }
  }
  return html;
}

std::string renderPreview(const PreviewPage& page) {
  return Renderer(page).render();
}

}  // namespace mmsbrix::tool
