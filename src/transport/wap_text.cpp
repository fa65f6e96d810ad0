#include "transport/wap_text.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "platform/ascii.h"
#include "wsp/wsp_assigned_headers.h"

namespace mmsbrix {
namespace {

/// The field name Content-Type as a short-integer.
constexpr std::uint8_t kContentType = 0x91;
constexpr char kAnyContent[] = "application/octet-stream";

}  // namespace

std::optional<std::uint8_t> wspStatus(unsigned httpStatus) noexcept {
  // Ranges of statuses, and where their codes begin.  [WAP-230 table 36]
  struct Range {
    unsigned first;
    unsigned last;
    std::uint8_t code;
  };
  constexpr Range kRanges[] = {
      {100, 101, 0x10}, {200, 206, 0x20}, {300, 307, 0x30},
      {400, 415, 0x40}, {416, 417, 0x50}, {500, 505, 0x60},
  };
  for (const Range& range : kRanges) {
    if (httpStatus >= range.first && httpStatus <= range.last) {
      return static_cast<std::uint8_t>(range.code + (httpStatus - range.first));
    }
  }
  return std::nullopt;
}

std::string methodName(std::uint8_t code) {
  const auto* table = WapAssignments::getTable(WapAssignments::kPduTypes);
  if (const char* name = WapAssignments::numberToName(*table, code)) return name;
  constexpr char kDigits[] = "0123456789ABCDEF";
  return {'0', 'x', kDigits[code >> 4], kDigits[code & 0x0F]};
}

TypedHeaders readTypedHeaders(Octets headers) {
  // Behind the name that the PDU leaves out it is a block like any other.
  std::vector<std::uint8_t> block{kContentType};
  block.insert(block.end(), headers.begin(), headers.end());
  TypedHeaders read;
  if (headers.empty()) return read;
  DecodedHeaders decoded = decodeHeaderBlock(block.data(), block.size());
  read.fields = std::move(decoded.fields);
  const bool broken = !decoded.problems.empty() && decoded.problems.front().position == 0;
  if (!broken && !read.fields.empty()) {
    read.contentType = std::move(read.fields.front().value);
    read.fields.erase(read.fields.begin());
  }
  return read;
}

std::vector<std::uint8_t> writeTypedHeaders(const std::string& contentType,
                                            const std::vector<HeaderField>& fields) {
  // The code of MMS messages is newer than what may be assumed of a peer, but every phone that
  // sends them knows it.
  EncodedHeaders type = encodeHeaderBlock(
      {{"Content-Type", contentType.empty() ? kAnyContent : contentType}}, EncodingVersion::v1_4);
  if (type.octets.empty()) type = encodeHeaderBlock({{"Content-Type", kAnyContent}});
  std::vector<std::uint8_t> octets(type.octets.begin() + 1, type.octets.end());
  const EncodedHeaders others = encodeHeaderBlock(fields);
  octets.insert(octets.end(), others.octets.begin(), others.octets.end());
  return octets;
}

void addMissing(const std::vector<HeaderField>& further, std::vector<HeaderField>& fields) {
  const auto folded = [](std::string name) {
    std::ranges::transform(name, name.begin(), foldAscii);
    return name;
  };
  std::set<std::string> known;
  for (const HeaderField& field : fields) known.insert(folded(field.name));
  std::ranges::copy_if(further, std::back_inserter(fields), [&](const HeaderField& field) {
    return !known.contains(folded(field.name));
  });
}

}  // namespace mmsbrix
