#include "wsp/http_text.h"

#include <algorithm>
#include <charconv>

#include "wsp/wsp_header_coding.h"

namespace mmsbrix {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kBase64 =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The length of the quoted string at the start of `text`, marks included; 0 when it has no end.
std::size_t quotedLength(std::string_view text) noexcept {
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '"') return i + 1;
    if (text[i] == '\\') ++i;
  }
  return 0;
}

bool beginsChallenge(std::string_view element) noexcept {
  TextScanner in(element);
  const std::string_view scheme = in.word("=");
  return isToken(scheme) && (in.atEnd() || in.rest().front() != '=');
}

}  // namespace

bool isToken(std::string_view text) noexcept {
  return std::ranges::all_of(
      text, [](char character) { return WapStack::TokenText::isTokenCharacter(character, false); });
}

bool isHeaderText(std::string_view text) noexcept {
  return std::ranges::all_of(text, [](char character) {
    const auto octet = static_cast<std::uint8_t>(character);
    return (octet >= ' ' && octet != 0x7F) || octet == '\t';
  });
}

std::string_view trimmed(std::string_view text) noexcept {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::optional<std::uint64_t> plainDecimal(std::string_view text) noexcept {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (text.size() > 1 && text.front() == '0') return std::nullopt;
  return value;
}

std::string unescaped(std::string_view inside) {
  std::string text;
  text.reserve(inside.size());
  for (std::size_t i = 0; i < inside.size(); ++i) {
    if (inside[i] == '\\' && i + 1 < inside.size()) ++i;
    text += inside[i];
  }
  return text;
}

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char character : text) {
    if (character == '"' || character == '\\') result += '\\';
    result += character;
  }
  return result += '"';
}

std::string quotedAsIs(std::string_view inside) {
  std::string result = "\"";
  for (std::size_t i = 0; i < inside.size(); ++i) {
    const bool pair = inside[i] == '\\' && i + 1 < inside.size();
    if (!pair && (inside[i] == '"' || inside[i] == '\\')) result += '\\';
    result += inside[i];
    if (pair) result += inside[++i];
  }
  return result += '"';
}

std::string tokenOrQuoted(std::string_view text) {
  return !text.empty() && isToken(text) ? std::string(text) : quoted(text);
}

std::string TextParameter::plainValue() const {
  return isQuoted ? unescaped(value) : std::string(value);
}

void TextScanner::skipBlanks() noexcept {
  rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
}

bool TextScanner::take(char character) noexcept {
  if (!rest_.starts_with(character)) return false;
  rest_.remove_prefix(1);
  skipBlanks();
  return true;
}

std::string_view TextScanner::word(std::string_view stops) noexcept {
  const auto end = std::ranges::find_if(rest_, [=](char character) {
    return kBlanks.find(character) != std::string_view::npos ||
           stops.find(character) != std::string_view::npos;
  });
  const std::string_view taken = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
  rest_.remove_prefix(taken.size());
  skipBlanks();
  return taken;
}

std::optional<std::string_view> TextScanner::quotedString() noexcept {
  if (!rest_.starts_with('"')) return std::nullopt;
  const std::size_t length = quotedLength(rest_);
  if (length == 0) return std::nullopt;
  const std::string_view inside = rest_.substr(1, length - 2);
  rest_.remove_prefix(length);
  skipBlanks();
  return inside;
}

std::optional<std::uint64_t> TextScanner::number() noexcept {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
  if (error != std::errc()) return std::nullopt;
  rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
  skipBlanks();
  return value;
}

std::optional<TextParameter> TextScanner::parameter(char separator) noexcept {
  const char stops[] = {separator, '=', '"', '\0'};
  TextParameter parameter;
  parameter.name = word(stops);
  if (parameter.name.empty() || !isToken(parameter.name)) return std::nullopt;
  if (take('=')) {
    parameter.hasValue = true;
    if (const auto inside = quotedString()) {
      parameter.isQuoted = true;
      parameter.value = *inside;
    } else {
      const char ends[] = {separator, '"', '\0'};
      parameter.value = word(ends);
      if (parameter.value.empty()) return std::nullopt;
    }
  }
  if (!atEnd() && rest_.front() != separator) return std::nullopt;
  return parameter;
}

std::optional<std::vector<TextParameter>> splitParameters(std::string_view text, char separator) {
  std::vector<TextParameter> parameters;
  TextScanner in(text);
  while (!in.atEnd()) {
    if (in.take(separator)) continue;
    const auto parameter = in.parameter(separator);
    if (!parameter) return std::nullopt;
    parameters.push_back(*parameter);
  }
  return parameters;
}

std::optional<ParameterisedText> splitParameterised(std::string_view text) {
  const std::size_t end = std::min(text.find(';'), text.size());
  auto parameters = splitParameters(text.substr(end), ';');
  if (!parameters) return std::nullopt;
  return ParameterisedText{trimmed(text.substr(0, end)), std::move(*parameters)};
}

std::vector<std::string_view> splitList(std::string_view text) {
  std::vector<std::string_view> elements;
  const auto add = [&](std::string_view element) {
    element = trimmed(element);
    if (!element.empty()) elements.push_back(element);
  };
  std::size_t begin = 0;
  std::size_t depth = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"' && depth == 0) {
      const std::size_t length = quotedLength(text.substr(i));
      // Without its end the quoted string is the rest of the text.
      i = length == 0 ? text.size() - 1 : i + length - 1;
    } else if (text[i] == '\\' && depth > 0) {
      ++i;
    } else if (text[i] == '(') {
      ++depth;
    } else if (text[i] == ')' && depth > 0) {
      --depth;
    } else if (text[i] == ',' && depth == 0) {
      add(text.substr(begin, i - begin));
      begin = i + 1;
    }
  }
  add(text.substr(begin));
  return elements;
}

std::vector<std::string_view> splitChallenges(std::string_view text) {
  std::vector<std::string_view> challenges;
  for (const std::string_view element : splitList(text)) {
    if (challenges.empty() || beginsChallenge(element)) {
      challenges.push_back(element);
    } else {
      const char* begin = challenges.back().data();
      challenges.back() = {begin,
                           static_cast<std::size_t>(element.data() - begin) + element.size()};
    }
  }
  return challenges;
}

std::string toBase64(Octets octets) {
  std::string text;
  text.reserve((octets.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < octets.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, octets.size() - i);
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) group = group << 8 | (k < count ? octets[i + k] : 0U);
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? kBase64[group >> (18 - 6 * k) & 0x3F] : '=';
    }
  }
  return text;
}

std::optional<std::string> fromBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::size_t padding = 0;
  while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=') ++padding;
  std::string octets;
  octets.reserve(text.size() / 4 * 3);
  std::uint32_t group = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool pad = i >= text.size() - padding;
    const std::size_t digit = pad ? 0 : kBase64.find(text[i]);
    if (digit == std::string_view::npos) return std::nullopt;
    group = group << 6 | static_cast<std::uint32_t>(digit);
    if (i % 4 != 3) continue;
    for (int shift = 16; shift >= 0; shift -= 8) octets += static_cast<char>(group >> shift & 0xFF);
    group = 0;
  }
  octets.resize(octets.size() - padding);
  if (toBase64(asOctets(octets)) != text) return std::nullopt;  // bits that stand for nothing
  return octets;
}

}  // namespace mmsbrix
