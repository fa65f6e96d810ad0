#include "model/address_text.h"

#include <algorithm>
#include <string>

#include "platform/ascii.h"

namespace mmsbrix {
namespace {

bool isDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}

bool isHexDigit(char c) noexcept {
  return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// The number without what people put in it to read it; empty when it is none.
std::string telephoneNumber(std::string_view text) {
  constexpr std::string_view kFillers = " -.()/";
  std::string number;
  for (const char c : text) {
    if (isDigit(c) || (c == '+' && number.empty()) || c == '*' || c == '#') {
      number += c;
    } else if (kFillers.find(c) == std::string_view::npos) {
      return {};
    }
  }
  return std::ranges::any_of(number, isDigit) ? number : std::string();
}

// What stands before the next `mark`, taken off the text together with it; all of it without one.
std::string_view takeUpTo(std::string_view& text, char mark) noexcept {
  const std::string_view taken = text.substr(0, text.find(mark));
  text.remove_prefix(std::min(taken.size() + 1, text.size()));
  return taken;
}

// Four decimal numbers up to 255, without leading zeros. [RFC 3986 3.2.2]
bool isIpv4(std::string_view text) noexcept {
  if (std::ranges::count(text, '.') != 3 || text.ends_with('.')) return false;
  while (!text.empty()) {
    const std::string_view group = takeUpTo(text, '.');
    if (group.empty() || group.size() > 3 || (group.size() > 1 && group.front() == '0')) {
      return false;
    }
    int number = 0;
    for (const char c : group) {
      if (!isDigit(c)) return false;
      number = number * 10 + (c - '0');
    }
    if (number > 255) return false;
  }
  return true;
}

// How many 16-bit groups a run of groups without "::" has; -1 for a run that is none.
int ipv6Groups(std::string_view text, bool mayEndInIpv4) noexcept {
  if (text.ends_with(':')) return -1;
  int groups = 0;
  while (!text.empty()) {
    const std::string_view group = takeUpTo(text, ':');
    if (mayEndInIpv4 && text.empty() && isIpv4(group)) return groups + 2;
    if (group.empty() || group.size() > 4 || !std::ranges::all_of(group, isHexDigit)) return -1;
    ++groups;
  }
  return groups;
}

// [RFC 4291 2.2]
bool isIpv6(std::string_view text) noexcept {
  constexpr int kGroups = 8;
  const std::size_t gap = text.find("::");
  if (gap == std::string_view::npos) return ipv6Groups(text, true) == kGroups;
  const int before = ipv6Groups(text.substr(0, gap), false);
  const int behind = ipv6Groups(text.substr(gap + 2), true);
  return before >= 0 && behind >= 0 && before + behind < kGroups;
}

bool isMail(std::string_view text) noexcept {
  const std::size_t at = text.find('@');
  return at != std::string_view::npos && at > 0 && at + 1 < text.size() &&
         std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) > 0x20; });
}

// A telephone number in parts: with the country's number or without.
struct Subscriber {
  std::string digits;  // without "+", "00" or the "0" of a national number
  bool international;
};

Subscriber subscriberOf(std::string_view text) {
  const std::string number = telephoneNumber(text);
  if (number.starts_with('+')) return {number.substr(1), true};
  if (number.starts_with("00")) return {number.substr(2), true};
  return {number.substr(number.starts_with('0') ? 1 : 0), false};
}

bool sameNumber(std::string_view one, std::string_view other) {
  // Shorter numbers are services, of which every country has its own.
  constexpr std::size_t kFewestDigits = 7;
  const Subscriber a = subscriberOf(one);
  const Subscriber b = subscriberOf(other);
  if (a.international == b.international) return a.digits == b.digits;
  const Subscriber& national = a.international ? b : a;
  const Subscriber& full = a.international ? a : b;
  return national.digits.size() >= kFewestDigits && full.digits.ends_with(national.digits);
}

}  // namespace

std::optional<CMMAddr> addressFromText(std::string_view text) {
  const std::string whole(text);
  if (isIpv4(text)) return CMMAddr(whole.c_str(), CMMAddr::TYPE_IPV4);
  if (isIpv6(text)) return CMMAddr(whole.c_str(), CMMAddr::TYPE_IPV6);
  if (const std::string number = telephoneNumber(text); !number.empty()) {
    return CMMAddr(number.c_str(), CMMAddr::TYPE_PLMN);
  }
  if (isMail(text)) return CMMAddr(whole.c_str(), CMMAddr::TYPE_PLAIN);
  return std::nullopt;
}

bool sameSubscriber(const CMMAddr& one, const CMMAddr& other) {
  const std::string_view a = one.Value()->Text();
  const std::string_view b = other.Value()->Text();
  const bool numbers = !telephoneNumber(a).empty() && !telephoneNumber(b).empty();
  if (numbers && one.GetType() != CMMAddr::TYPE_IPV4 && other.GetType() != CMMAddr::TYPE_IPV4) {
    return sameNumber(a, b);
  }
  return equalsIgnoringCase(a, b);
}

}  // namespace mmsbrix
