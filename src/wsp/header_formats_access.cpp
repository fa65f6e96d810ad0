// Value formats of authentication and cookies.  [RFC 2617, RFC 2109]
#include <algorithm>

#include "platform/ascii.h"
#include "wsp/header_format_tools.h"
#include "wsp/header_formats.h"

namespace WapStack {
namespace {

using mmsbrix::TextParameter;
using mmsbrix::TextScanner;

constexpr std::string_view kBasic = "Basic";
constexpr std::uint8_t kBasicOctet = 0x80;
constexpr std::string_view kRealm = "realm";
constexpr std::string_view kVersionName = "Version";
constexpr std::string_view kCookieVersion = "$Version";
constexpr std::string_view kCookiePath = "$Path";
constexpr std::string_view kCookieDomain = "$Domain";

// "scheme name=value, name=value"; nothing for another grammar, such as that of a bearer token.
struct Scheme {
  std::string_view name;
  std::vector<TextParameter> parameters;
};
std::optional<Scheme> splitScheme(std::string_view text) {
  TextScanner words(text);
  const std::string_view name = words.word();
  auto parameters = mmsbrix::splitParameters(words.rest(), ',');
  if (!parameters || !mmsbrix::isToken(name)) return std::nullopt;
  if (!std::ranges::all_of(*parameters, &TextParameter::hasValue)) return std::nullopt;
  return Scheme{name, std::move(*parameters)};
}

bool writeParameters(const std::vector<TextParameter>& parameters, const TextParameter* except,
                     Version version, Writer& out) {
  for (const TextParameter& parameter : parameters) {
    if (&parameter != except && !writeParameter(parameter, version, out)) return false;
  }
  return true;
}

// Reads parameters behind a scheme, separated by commas.
bool readSchemeParameters(Reader& in, bool first, std::string& text) {
  if (in.atEnd()) return true;
  text += first ? " " : ", ";
  return readParameter(in, text) && readParameters(in, ", ", text);
}

bool decodeCredentials(Reader& in, std::string& text) {
  if (!enter(in)) return false;
  if (in.peekOctet() == kBasicOctet) {
    in.skip(1);
    const auto user = takeText(in);
    const auto password = takeText(in);
    if (!user || !password) return false;
    const std::string pair = std::string(*user).append(":").append(*password);
    text = std::string(kBasic).append(" ").append(mmsbrix::toBase64(mmsbrix::asOctets(pair)));
    return true;
  }
  const auto scheme = textAhead(in) ? takeText(in) : std::nullopt;
  if (!scheme || !mmsbrix::isToken(*scheme)) return false;
  text = *scheme;
  return readSchemeParameters(in, true, text);
}

bool writeBasic(std::string_view encoded, Writer& out) {
  const auto pair = mmsbrix::fromBase64(encoded);
  const std::size_t colon = pair ? pair->find(':') : std::string::npos;
  if (colon == std::string::npos) return false;
  const std::string_view user = std::string_view(*pair).substr(0, colon);
  const std::string_view password = std::string_view(*pair).substr(colon + 1);
  if (!fitsTextString(user) || !fitsTextString(password)) return false;
  out.octet(kBasicOctet);
  mmsbrix::writeTextString(out, user);
  mmsbrix::writeTextString(out, password);
  return !out.failed();
}

bool encodeCredentials(std::string_view text, Version version, Writer& out) {
  return writeInside(out, [&] {
    TextScanner words(text);
    if (mmsbrix::equalsIgnoringCase(words.word(), kBasic)) return writeBasic(words.rest(), out);
    const auto scheme = splitScheme(text);
    return scheme && writeToken(scheme->name, out) &&
           writeParameters(scheme->parameters, nullptr, version, out);
  });
}

bool decodeChallenge(Reader& in, std::string& text) {
  if (!enter(in)) return false;
  if (in.peekOctet() == kBasicOctet) {
    in.skip(1);
    text = kBasic;
  } else {
    const auto scheme = textAhead(in) ? takeText(in) : std::nullopt;
    if (!scheme || !mmsbrix::isToken(*scheme)) return false;
    text = *scheme;
  }
  const auto realm = takeText(in);
  text.append(" ").append(kRealm).append("=").append(mmsbrix::quoted(realm.value_or("")));
  return realm && readSchemeParameters(in, false, text);
}

bool encodeChallenge(std::string_view text, Version version, Writer& out) {
  const auto scheme = splitScheme(text);
  if (!scheme) return false;
  const TextParameter* realm = nullptr;
  for (const TextParameter& parameter : scheme->parameters) {
    const bool isRealm = mmsbrix::equalsIgnoringCase(parameter.name, kRealm);
    if (isRealm && realm == nullptr) realm = &parameter;
  }
  if (realm == nullptr || !mmsbrix::isHeaderText(realm->value)) return false;
  return writeInside(out, [&] {
    const bool isBasic = mmsbrix::equalsIgnoringCase(scheme->name, kBasic);
    if (isBasic && scheme->parameters.size() == 1) {
      out.octet(kBasicOctet);
    } else if (!writeToken(scheme->name, out)) {
      return false;
    }
    mmsbrix::writeTextString(out, realm->plainValue());
    return writeParameters(scheme->parameters, realm, version, out);
  });
}

// A cookie's own name and value, which stand on the wire as they stand in text.
struct CookiePair {
  std::string_view name;
  std::string_view value;
};
std::optional<CookiePair> takeCookiePair(TextScanner& words) noexcept {
  CookiePair pair;
  pair.name = words.word("=;");
  if (pair.name.empty() || !words.take('=')) return std::nullopt;
  const std::string_view ahead = words.rest();
  if (const auto inside = words.quotedString()) {
    pair.value = ahead.substr(0, inside->size() + 2);
  } else {
    pair.value = words.word(";");
  }
  if (!words.atEnd() && !words.take(';')) return std::nullopt;
  return pair;
}
// The value without the quotation marks that it may have.
std::string plain(std::string_view value) {
  const bool marked = value.size() > 1 && value.starts_with('"') && value.ends_with('"');
  return marked ? mmsbrix::unescaped(value.substr(1, value.size() - 2)) : std::string(value);
}

// Cookies without a version are those of before RFC 2109; the wire has version 0 for them.
constexpr std::string_view kNoVersion = "0";
bool isNoVersion(std::string_view version) noexcept {
  return version.empty() || version == kNoVersion || version == "0.0";
}
void writeCookieVersion(std::string_view version, Writer& out) {
  writeVersion(isNoVersion(version) ? kNoVersion : version, out);
}

bool decodeSetCookie(Reader& in, std::string& text) {
  std::string version;
  if (!enter(in) || !readVersion(in, version)) return false;
  const auto name = takeText(in);
  const auto value = takeText(in);
  if (!value || name->empty()) return false;
  text = std::string(*name).append("=").append(*value);
  if (!isNoVersion(version)) {
    text.append("; ").append(kVersionName).append("=").append(mmsbrix::tokenOrQuoted(version));
  }
  return readParameters(in, "; ", text);
}

bool encodeSetCookie(std::string_view text, Version version, Writer& out) {
  TextScanner words(text);
  const auto cookie = takeCookiePair(words);
  const auto parameters = mmsbrix::splitParameters(words.rest(), ';');
  if (!cookie || !parameters) return false;
  const TextParameter* cookieVersion = nullptr;
  for (const TextParameter& parameter : *parameters) {
    if (!mmsbrix::equalsIgnoringCase(parameter.name, kVersionName)) continue;
    if (cookieVersion != nullptr) return false;  // the wire has one
    cookieVersion = &parameter;
  }
  return writeInside(out, [&] {
    writeCookieVersion(cookieVersion != nullptr ? cookieVersion->plainValue() : std::string(), out);
    mmsbrix::writeTextString(out, cookie->name);
    mmsbrix::writeTextString(out, cookie->value);
    return writeParameters(*parameters, cookieVersion, version, out);
  });
}

bool decodeCookie(Reader& in, std::string& text) {
  std::string version;
  if (!enter(in) || !readVersion(in, version)) return false;
  if (!isNoVersion(version)) {
    text.append(kCookieVersion).append("=").append(mmsbrix::quoted(version));
  }
  while (!in.atEnd()) {
    const auto length = mmsbrix::readUintvar(in);
    if (!length || *length > in.left()) return false;
    Reader cookie = in.sub(*length);
    const auto name = takeText(cookie);
    const auto value = takeText(cookie);
    if (!value || name->empty()) return false;
    text.append(text.empty() ? "" : "; ").append(*name).append("=").append(*value);
    for (const std::string_view attribute : {kCookiePath, kCookieDomain}) {
      if (cookie.atEnd()) break;
      const auto attributeValue = takeText(cookie);
      if (!attributeValue) return false;
      if (attributeValue->empty()) continue;
      text.append("; ").append(attribute).append("=").append(mmsbrix::quoted(*attributeValue));
    }
    if (!isWhole(cookie)) return false;
  }
  return !text.empty();
}

bool encodeCookie(std::string_view text, Version /*version*/, Writer& out) {
  TextScanner words(text);
  auto pair = takeCookiePair(words);
  if (!pair) return false;
  return writeInside(out, [&] {
    const bool versioned = mmsbrix::equalsIgnoringCase(pair->name, kCookieVersion);
    writeCookieVersion(versioned ? plain(pair->value) : std::string(), out);
    if (versioned) pair = takeCookiePair(words);
    while (pair) {
      const CookiePair cookie = *pair;
      if (cookie.name.starts_with('$')) return false;  // an attribute out of its place
      std::string path;
      std::string domain;
      for (pair = takeCookiePair(words); pair; pair = takeCookiePair(words)) {
        if (mmsbrix::equalsIgnoringCase(pair->name, kCookieDomain)) {
          domain = plain(pair->value);
        } else if (domain.empty() && mmsbrix::equalsIgnoringCase(pair->name, kCookiePath)) {
          path = plain(pair->value);
        } else {
          break;
        }
      }
      std::size_t octets =
          mmsbrix::textStringSize(cookie.name) + mmsbrix::textStringSize(cookie.value);
      const bool hasPath = !path.empty() || !domain.empty();
      if (hasPath) octets += mmsbrix::textStringSize(path);
      if (!domain.empty()) octets += mmsbrix::textStringSize(domain);
      mmsbrix::writeUintvar(out, static_cast<std::uint32_t>(octets));
      mmsbrix::writeTextString(out, cookie.name);
      mmsbrix::writeTextString(out, cookie.value);
      if (hasPath) mmsbrix::writeTextString(out, path);
      if (!domain.empty()) mmsbrix::writeTextString(out, domain);
    }
    return words.atEnd();
  });
}

}  // namespace

const ValueFormat kCredentialsFormat{decodeCredentials, encodeCredentials};
const ValueFormat kChallengeFormat{decodeChallenge, encodeChallenge};
const ValueFormat kCookieFormat{decodeCookie, encodeCookie};
const ValueFormat kSetCookieFormat{decodeSetCookie, encodeSetCookie};

}  // namespace WapStack
