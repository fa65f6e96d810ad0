#include "wapstack/wsp_capabilities.h"

#include <array>

#include "wsp/wap_mms_shared.h"

namespace mmsbrix::session {
namespace {

/// How a capability's answer is held against its proposal.
enum class Rule : std::uint8_t { size, count, flags };

/// One row per capability: a uintvar size, or one octet.
struct Capability {
  std::uint8_t id;
  Rule rule;
  std::optional<std::uint32_t> Capabilities::*size;
  std::optional<std::uint8_t> Capabilities::*octet;
  std::uint32_t Agreement::*agreedSize;
  std::uint8_t Agreement::*agreedOctet;
};
using C = Capabilities;
using A = Agreement;
constexpr auto kCapabilities = std::to_array<Capability>({
    {0x00, Rule::size, &C::clientSduSize, nullptr, &A::clientSduSize, nullptr},
    {0x01, Rule::size, &C::serverSduSize, nullptr, &A::serverSduSize, nullptr},
    {0x02, Rule::flags, nullptr, &C::protocolOptions, nullptr, &A::protocolOptions},
    {0x03, Rule::count, nullptr, &C::methodMor, nullptr, &A::methodMor},
    {0x04, Rule::count, nullptr, &C::pushMor, nullptr, &A::pushMor},
});

bool readValue(const Capability& row, Reader in, Capabilities& out) {
  constexpr Agreement kDefaults;
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
      writeUintvar(out, static_cast<std::uint32_t>(1 + uintvarSize(*value)));
      writeShortInteger(out, row.id);
      writeUintvar(out, *value);
    } else if (const auto& value = capabilities.*row.octet) {
      writeUintvar(out, 2);
      writeShortInteger(out, row.id);
      out.octet(*value);
    }
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
    for (const Capability& row : kCapabilities) {
      if (row.id == (name & ~kShortIntegerBit) && !readValue(row, capability, out)) {
        return std::nullopt;
      }
    }
  }
  return out;
}

std::optional<Agreement> agree(const Capabilities& proposed,
                               const Capabilities& answered) noexcept {
  Agreement agreement;
  for (const Capability& row : kCapabilities) {
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

}  // namespace mmsbrix::session
