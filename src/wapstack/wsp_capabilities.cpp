#include "wapstack/wsp_capabilities.h"

#include <algorithm>
#include <array>

#include "wapstack/wsp_pdu.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix::session {
namespace {

/// How a capability's answer is held against its proposal.
enum class Rule : std::uint8_t { size, count, flags };

/// One row per capability that is a uintvar size or one octet.
struct Capability {
  std::uint8_t id;
  Rule rule;
  std::optional<std::uint32_t> Capabilities::*size;
  std::optional<std::uint8_t> Capabilities::*octet;
  std::uint32_t Agreement::*agreedSize;
  std::uint8_t Agreement::*agreedOctet;
  bool granted;  ///< by a server here
};
using C = Capabilities;
using A = Agreement;
constexpr auto kCapabilities = std::to_array<Capability>({
    {0x00, Rule::size, &C::clientSduSize, nullptr, &A::clientSduSize, nullptr, true},
    {0x01, Rule::size, &C::serverSduSize, nullptr, &A::serverSduSize, nullptr, true},
    {0x02, Rule::flags, nullptr, &C::protocolOptions, nullptr, &A::protocolOptions, true},
    {0x03, Rule::count, nullptr, &C::methodMor, nullptr, &A::methodMor, true},
    {0x04, Rule::count, nullptr, &C::pushMor, nullptr, &A::pushMor, true},
    {0x08, Rule::size, &C::clientMessageSize, nullptr, &A::clientMessageSize, nullptr, false},
    {0x09, Rule::size, &C::serverMessageSize, nullptr, &A::serverMessageSize, nullptr, false},
});
constexpr std::uint8_t kAliases = 0x07;

/// The capabilities that are lists of codes.
struct CodeList {
  std::uint8_t id;
  std::optional<std::vector<NamedCode>> Capabilities::*codes;
  std::vector<std::uint8_t> Agreement::*agreed;
};
constexpr auto kCodeLists = std::to_array<CodeList>({
    {0x05, &C::extendedMethods, &A::extendedMethods},
    {0x06, &C::headerCodePages, &A::headerCodePages},
});

constexpr Agreement kDefaults;

constexpr std::uint16_t bitOf(std::uint8_t id) {
  return static_cast<std::uint16_t>(1u << id);
}

void encodeCapability(std::uint8_t id, Octets parameters, Writer& out) {
  writeUintvar(out, static_cast<std::uint32_t>(1 + parameters.size()));
  writeShortInteger(out, id);
  out.append(parameters);
}

void readCodes(const CodeList& list, Reader in, Capabilities& out) {
  auto& codes = out.*list.codes;
  if (codes) return;
  codes.emplace();
  while (const auto code = in.octet()) codes->push_back({*code, {}});
}

/// The codes that hold: those of the proposal, as far as an answer repeats them.
std::vector<std::uint8_t> agreedCodes(const std::optional<std::vector<NamedCode>>& proposed,
                                      const std::optional<std::vector<NamedCode>>& answered) {
  std::vector<std::uint8_t> agreed;
  if (!proposed) return agreed;
  for (const NamedCode& own : *proposed) {
    const bool holds =
        !answered || std::ranges::find(*answered, own.code, &NamedCode::code) != answered->end();
    if (holds) agreed.push_back(own.code);
  }
  return agreed;
}

bool readValue(const Capability& row, Reader in, Capabilities& out) {
  if (row.rule == Rule::size) {
    auto& value = out.*row.size;
    if (value) return true;
    if (in.atEnd()) {
      value = kDefaults.*row.agreedSize;
      return true;
    }
    value = readUintvar(in);
    return value.has_value();
  }
  auto& value = out.*row.octet;
  if (!value) value = in.atEnd() ? kDefaults.*row.agreedOctet : *in.peekOctet();
  return true;
}

bool hasValue(const Capability& row, const Capabilities& in) {
  return row.rule == Rule::size ? (in.*row.size).has_value() : (in.*row.octet).has_value();
}

/// 0 is no limit, so it is above every other size.
bool exceeds(std::uint32_t answered, std::uint32_t proposed) {
  return proposed != 0 && (answered == 0 || answered > proposed);
}

}  // namespace

void encodeCapabilities(const Capabilities& capabilities, Writer& out) noexcept {
  for (const Capability& row : kCapabilities) {
    if (row.rule == Rule::size) {
      const auto& value = capabilities.*row.size;
      if (!value) continue;
      Writer size;
      writeUintvar(size, *value);
      encodeCapability(row.id, size.written(), out);
    } else if (const auto& value = capabilities.*row.octet) {
      encodeCapability(row.id, {&*value, 1}, out);
    }
  }
  for (const CodeList& list : kCodeLists) {
    if (!(capabilities.*list.codes)) continue;
    Writer codes;
    for (const NamedCode& code : *(capabilities.*list.codes)) {
      codes.octet(code.code);
      codes.append(std::string_view(code.name));
      codes.octet(0);
    }
    encodeCapability(list.id, codes.written(), out);
  }
  if (!capabilities.aliases.empty()) {
    Writer addresses;
    encodeAddresses(capabilities.aliases, WdpAddress{}, addresses);
    encodeCapability(kAliases, addresses.written(), out);
  }
}

std::optional<Capabilities> decodeCapabilities(Octets block) noexcept {
  Capabilities out;
  Reader in(block);
  while (!in.atEnd()) {
    const auto length = readUintvar(in);
    if (!length || *length == 0 || *length > in.left()) return std::nullopt;
    Reader capability = in.sub(*length);
    const std::uint8_t name = *capability.octet();
    if ((name & kShortIntegerBit) == 0) continue;  // a textual name: none is known here
    const auto id = static_cast<std::uint8_t>(name & ~kShortIntegerBit);
    for (const Capability& row : kCapabilities) {
      if (row.id != id) continue;
      if (capability.atEnd() && !hasValue(row, out)) out.unrecognised |= bitOf(id);
      if (!readValue(row, capability, out)) return std::nullopt;
    }
    for (const CodeList& list : kCodeLists) {
      if (list.id == id) readCodes(list, capability, out);
    }
  }
  return out;
}

std::optional<Agreement> agree(const Capabilities& proposed,
                               const Capabilities& answered) noexcept {
  Agreement agreement;
  for (const CodeList& list : kCodeLists) {
    agreement.*list.agreed = agreedCodes(proposed.*list.codes, answered.*list.codes);
  }
  for (const Capability& row : kCapabilities) {
    // A server that did not understand the proposal keeps to the default, be it above or below.
    if ((answered.unrecognised & bitOf(row.id)) != 0) continue;
    if (row.rule == Rule::size) {
      auto& agreed = agreement.*row.agreedSize;
      agreed = (proposed.*row.size).value_or(agreed);
      const auto answer = answered.*row.size;
      if (answer && exceeds(*answer, agreed)) return std::nullopt;
      agreed = answer.value_or(agreed);
    } else {
      auto& agreed = agreement.*row.agreedOctet;
      agreed = (proposed.*row.octet).value_or(agreed);
      const auto answer = answered.*row.octet;
      const bool more =
          answer && (row.rule == Rule::flags ? (*answer & ~agreed & 0xF8) != 0 : *answer > agreed);
      if (more) return std::nullopt;
      agreed = answer.value_or(agreed);
    }
  }
  return agreement;
}

Grant grant(const Capabilities& proposed, const Agreement& limits) noexcept {
  Grant made;
  for (const Capability& row : kCapabilities) {
    if (!row.granted) continue;
    if (row.rule == Rule::size) {
      auto& agreed = made.agreement.*row.agreedSize;
      const auto& wanted = proposed.*row.size;
      agreed = wanted.value_or(agreed);
      if (exceeds(agreed, limits.*row.agreedSize)) agreed = limits.*row.agreedSize;
      if (wanted || agreed != kDefaults.*row.agreedSize) made.answer.*row.size = agreed;
    } else {
      auto& agreed = made.agreement.*row.agreedOctet;
      const auto& wanted = proposed.*row.octet;
      const std::uint8_t limit = limits.*row.agreedOctet;
      agreed = wanted.value_or(agreed);
      agreed = row.rule == Rule::flags ? static_cast<std::uint8_t>(agreed & limit)
                                       : std::min(agreed, limit);
      if (wanted || agreed != kDefaults.*row.agreedOctet) made.answer.*row.octet = agreed;
    }
  }
  return made;
}

void encodeUnsupported(Octets block, Writer& out) noexcept {
  Reader in(block);
  while (!in.atEnd()) {
    Reader capability = in.sub(readUintvar(in).value_or(0));
    const auto name = capability.peekOctet();
    if (!name) return;
    if ((*name & kShortIntegerBit) == 0) {
      const std::string_view text = capability.text();
      if (capability.failed()) return;
      writeUintvar(out, static_cast<std::uint32_t>(text.size() + 1));
      out.append(text);
      out.octet(0);
    } else if (std::ranges::none_of(kCapabilities, [&](const Capability& row) {
                 return row.granted && row.id == (*name & ~kShortIntegerBit);
               })) {
      writeUintvar(out, 1);
      out.octet(*name);
    }
  }
}

}  // namespace mmsbrix::session
