#include "transport/operators.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <string_view>

#include "platform/files.h"
#include "platform/xml.h"

namespace mmsbrix {
namespace {

constexpr std::uint16_t kDefaultProxyPort = 80;

std::string_view trimmed(std::string_view text) noexcept {
  constexpr std::string_view kBlanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string attributeOf(std::span<const platform::XmlAttribute> attributes, std::string_view name) {
  const auto found = std::ranges::find(attributes, name, &platform::XmlAttribute::name);
  return std::string(found == attributes.end() ? std::string_view() : found->value);
}

// "10.0.0.1:8080", now and then without the port or with a scheme in front.
void splitProxy(std::string_view text, OperatorSettings& settings) {
  if (const std::size_t scheme = text.find("://"); scheme != std::string_view::npos) {
    text.remove_prefix(scheme + 3);
  }
  text = text.substr(0, text.find('/'));
  const std::size_t colon = text.find(':');
  settings.proxyHost = text.substr(0, colon);
  settings.proxyPort = kDefaultProxyPort;
  if (colon != std::string_view::npos) {
    std::from_chars(text.data() + colon + 1, text.data() + text.size(), settings.proxyPort);
  }
}

// Collects what stands in country / provider / gsm / apn.
class Collector final : public platform::XmlEvents {
 public:
  void startElement(std::string_view name,
                    std::span<const platform::XmlAttribute> attributes) override {
    if (path_.empty()) isDatabase_ = name == "serviceproviders";
    path_.emplace_back(name);
    text_.clear();
    if (name == "country") {
      country_ = attributeOf(attributes, "code");
    } else if (name == "provider") {
      operator_.clear();
    } else if (name == "apn") {
      settings_ = {};
      settings_.apn = attributeOf(attributes, "value");
    }
  }

  void endElement() override {
    const std::string name = path_.back();
    path_.pop_back();
    const std::string parent = path_.empty() ? "" : path_.back();
    const std::string_view text = trimmed(text_);
    if (parent == "provider" && name == "name" && operator_.empty()) operator_ = text;
    if (parent == "apn") takeSetting(name, text);
    if (name == "apn" && !settings_.url.empty()) {
      settings_.country = country_;
      settings_.name = operator_;
      found_.push_back(settings_);
    }
    text_.clear();
  }

  void other(const char*) override {}
  void characters(std::string_view piece) override { text_ += piece; }

  [[nodiscard]] bool isDatabase() const noexcept { return isDatabase_; }
  [[nodiscard]] std::vector<OperatorSettings>& found() noexcept { return found_; }

 private:
  void takeSetting(std::string_view name, std::string_view text) {
    if (name == "name" && settings_.plan.empty()) settings_.plan = text;
    if (name == "mmsc") settings_.url = text;
    if (name == "username") settings_.user = text;
    if (name == "password") settings_.password = text;
    if (name == "mmsproxy" && !text.empty()) splitProxy(text, settings_);
  }

  std::vector<std::string> path_;  // names of the open elements
  std::string text_;               // since the last tag
  std::string country_;
  std::string operator_;
  OperatorSettings settings_;
  std::vector<OperatorSettings> found_;
  bool isDatabase_ = false;
};

}  // namespace

std::optional<std::vector<OperatorSettings>> loadOperators(const std::string& path,
                                                           std::string& error) {
  auto file = platform::InputFile::open(path.c_str());
  std::string text;
  const bool fits = file && file->size() <= platform::kMaxXmlOctets;
  if (fits) text.resize(static_cast<std::size_t>(file->size()));
  if (!fits || !file->read(std::span(reinterpret_cast<std::uint8_t*>(text.data()), text.size()))) {
    error = path + ": cannot be read";
    return std::nullopt;
  }
  Collector collector;
  if (const auto broken = platform::readXml(text, collector)) {
    error = path + ": line " + std::to_string(broken->line) + ": " + broken->reason;
    return std::nullopt;
  }
  if (!collector.isDatabase()) {
    error = path + ": this is no database of operators";
    return std::nullopt;
  }
  return std::move(collector.found());
}

}  // namespace mmsbrix
