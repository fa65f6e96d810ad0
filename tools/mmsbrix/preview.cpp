#include "preview.h"

#include <mmsbrix/convert/extraction.h>
#include <mmsbrix/convert/references.h>
#include <mmsbrix/mms/charsets.h>
#include <mmsbrix/mms/mmscodec.h>
#include <mmsbrix/smil/smil.h>
#include <mmsbrix/smil/smilcodec.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <map>
#include <ostream>

#include "clock.h"

namespace mmsbrix::tool {
namespace {

constexpr int kMaxPixels = 4096;
constexpr int kMaxDepth = 64;  // of containers in containers that are looked into
constexpr std::size_t kMaxSlides = 500;
constexpr std::size_t kMaxItems = 2000;                    // on all slides together
constexpr std::size_t kMaxOctets = std::size_t{64} << 20;  // of media on all slides together
constexpr std::size_t kMaxNotes = 50;

const char* attribute(CSMILNode& node, const char* name) {
  const CSMILAttr* found = node.FindAttribute(name);
  return found == nullptr ? "" : found->GetValue();
}

// Pixels of "20", "20px" or "50%" of `whole`; nothing for anything else.
std::optional<int> pixels(const char* text, int whole) {
  char* end = nullptr;
  const double number = std::strtod(text, &end);
  if (end == text) return std::nullopt;
  const bool percent = *end == '%';
  const double value = percent ? number * whole / 100 : number;
  if (!(value >= 0 && value <= kMaxPixels)) return std::nullopt;
  return static_cast<int>(value);
}

std::string headerValue(const CMMPart& part, const char* name) {
  CMMHdrList headers = *part.Headers();
  const CMMHdr* header = headers.Find(name);
  return header == nullptr ? "" : header->GetValue();
}

PreviewItem itemOf(const CMMPart& part) {
  PreviewItem item;
  item.mediaType = headerValue(part, "Content-Type");
  item.name = headerValue(part, "Content-Location");
  if (item.name.empty()) item.name = headerValue(part, "Content-ID");
  if (item.name.empty()) item.name = "A part";
  // Only plain text shows as text: HTML and the like would show their tags, and stay files.
  if (item.mediaType == "text/plain") {
    item.text = textContent(part);
  } else {
    item.octets = decodedContent(part);
  }
  return item;
}

std::string addressText(const CMMAddr& address) {
  return toUtf8(address.Value()->Text(), address.Value()->Charset())
      .value_or(std::string(address.Value()->Text()));
}

std::string dateText(const SYSTEMTIME& date) {
  char text[64];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u", unsigned{date.wYear},
                unsigned{date.wMonth}, unsigned{date.wDay}, unsigned{date.wHour},
                unsigned{date.wMinute});
  return text;
}

class PageBuilder {
 public:
  explicit PageBuilder(CMMsg& message) : message_(message) {}

  PreviewPage build() {
    fields();
    CMMPart* presentation = findPresentation(message_);
    CSMIL smil;
    if (presentation != nullptr &&
        MMS_LoadSmilFromMemory(textContent(*presentation).c_str(), &smil, 0) == 1) {
      references_ = resolveReferences(smil, message_);
      for (const MediaReference& reference : references_.media) {
        if (reference.part != nullptr) parts_.emplace(reference.media, reference.part);
      }
      layout(smil);
      if (CSMILBody* body = smil.GetBody()) container(*body, 0);
      closeSlide();
      if (leftOut_) page_.notes.emplace_back("There is more than this page shows.");
      for (const MediaReference& reference : references_.media) {
        if (reference.part == nullptr && page_.notes.size() < kMaxNotes) {
          page_.notes.push_back(std::string("A slide refers to ") + reference.media->GetSrc() +
                                ", which the message does not have.");
        }
      }
      for (const CMMPart* part : references_.unmentioned) page_.others.push_back(itemOf(*part));
    } else {
      if (presentation != nullptr) page_.notes.emplace_back("The presentation cannot be read.");
      everyPart(*message_.Content(), 0);
    }
    return std::move(page_);
  }

 private:
  void field(const char* name, std::string value) {
    if (!value.empty()) page_.fields.emplace_back(name, std::move(value));
  }

  void addresses(const char* name, CMMAddrList& list) {
    std::string all;
    for (const CMMAddr& address : list) {
      if (!all.empty()) all += ", ";
      all += addressText(address);
    }
    field(name, std::move(all));
  }

  void fields() {
    const CMMString* subject = message_.GetSubject();
    if (subject != nullptr) {
      page_.title = toUtf8(subject->Text(), subject->Charset()).value_or(subject->Get());
    }
    if (page_.title.empty()) page_.title = "Multimedia message";
    field("From", addressText(*message_.GetFrom()));
    addresses("To", *message_.GetTo());
    addresses("Cc", *message_.GetCc());
    addresses("Bcc", *message_.GetBcc());
    if (message_.GetDate()->wYear != 0) field("Date", dateText(*message_.GetDate()));
  }

  void layout(CSMIL& smil) {
    CSMILHead* head = smil.GetHead();
    layout_ = head == nullptr ? nullptr : head->GetLayout();
    CSMILRootLayout* root = layout_ == nullptr ? nullptr : layout_->GetRootLayout();
    if (root == nullptr) return;
    page_.width = pixels(attribute(*root, "width"), 0).value_or(0);
    page_.height = pixels(attribute(*root, "height"), 0).value_or(0);
    page_.background = attribute(*root, "background-color");
    if (page_.background.empty()) page_.background = attribute(*root, "backgroundColor");
  }

  // A par is a slide; a medium outside any par is one of its own.
  void container(CSMILNode& node, int depth) {
    if (depth > kMaxDepth) return;
    for (unsigned i = 0; i < node.ElementCount(); ++i) {
      CSMILNode& child = *node.Element(i);
      if (auto* media = dynamic_cast<CSMILMedia*>(&child)) {
        medium(*media);
        if (!insidePar_) closeSlide();
      } else if (dynamic_cast<CSMILPar*>(&child) != nullptr && !insidePar_) {
        insidePar_ = true;
        slide_.milliseconds = parseClock(attribute(child, "dur")).value_or(0);
        container(child, depth + 1);
        insidePar_ = false;
        closeSlide();
      } else {
        container(child, depth + 1);
      }
    }
  }

  void medium(CSMILMedia& media) {
    const auto found = parts_.find(&media);
    if (found == parts_.end()) return;
    octets_ += static_cast<std::size_t>(found->second->GetContentLen());
    if (++items_ > kMaxItems || octets_ > kMaxOctets) {
      leftOut_ = true;
      return;
    }
    PreviewItem item = itemOf(*found->second);
    const char* region = media.GetRegion();
    CSMILRegion* place =
        layout_ == nullptr || region == nullptr ? nullptr : layout_->FindRegion(region);
    if (place != nullptr && page_.width > 0 && page_.height > 0) {
      item.box = boxOf(*place);
      item.fill = std::string_view(attribute(*place, "fit")) == "fill";
    }
    slide_.items.push_back(std::move(item));
  }

  // A size as stated, else what is left between the two sides.
  static int extent(CSMILRegion& region, const char* size, const char* side, int begin, int whole) {
    if (const auto stated = pixels(attribute(region, size), whole)) return *stated;
    return std::max(whole - begin - pixels(attribute(region, side), whole).value_or(0), 0);
  }

  PreviewBox boxOf(CSMILRegion& region) const {
    PreviewBox box;
    box.left = pixels(attribute(region, "left"), page_.width).value_or(0);
    box.top = pixels(attribute(region, "top"), page_.height).value_or(0);
    box.width = extent(region, "width", "right", box.left, page_.width);
    box.height = extent(region, "height", "bottom", box.top, page_.height);
    return box;
  }

  void closeSlide() {
    const bool something = !slide_.items.empty();
    if (something && page_.slides.size() < kMaxSlides) {
      page_.slides.push_back(std::move(slide_));
    } else if (something) {
      leftOut_ = true;
    }
    slide_ = PreviewSlide();
  }

  void everyPart(const CMMPart& part, int depth) {
    for (unsigned i = 0; i < part.ChildCount() && depth < kMaxDepth; ++i) {
      everyPart(*part.Child(i), depth + 1);
    }
    if (part.ChildCount() == 0 && part.GetContent() != nullptr && page_.others.size() < kMaxItems) {
      page_.others.push_back(itemOf(part));
    }
  }

  CMMsg& message_;
  PreviewPage page_;
  References references_;
  CSMILLayout* layout_ = nullptr;
  PreviewSlide slide_;
  bool insidePar_ = false;
  std::map<const CSMILMedia*, CMMPart*> parts_;
  std::size_t items_ = 0;
  std::size_t octets_ = 0;
  bool leftOut_ = false;
};

}  // namespace

CLI::App* addPreview(CLI::App& app, PreviewCommand& command) {
  CLI::App* preview =
      app.add_subcommand("preview", "Write one self-contained HTML page that shows a message");
  preview->footer("Example:\n  mmsbrix preview received.mms -o page.html");
  preview->add_option("FILE", command.file, "Message, - for standard input")->required();
  preview->add_option("-o,--output", command.output, "Where the page goes, - for standard output")
      ->type_name("FILE")
      ->required();
  return preview;
}

int runPreview(const PreviewCommand& command, const Streams& streams) {
  CMMsg message;
  if (!loadMessage(command.file, "preview", streams, message)) return kFailed;
  return writeOutput(command.output, renderPreview(describePage(message)), "preview", streams);
}

PreviewPage describePage(CMMsg& message) {
  return PageBuilder(message).build();
}

}  // namespace mmsbrix::tool
