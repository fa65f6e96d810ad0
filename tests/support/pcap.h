// Captures for a packet dissector, written by hand: one packet of raw IP.
#ifndef MMSBRIX_TESTS_SUPPORT_PCAP_H
#define MMSBRIX_TESTS_SUPPORT_PCAP_H

#include <cstdint>
#include <string>
#include <string_view>

namespace mmsbrix::test {

inline std::string bigEndian(std::uint64_t value, int octets) {
  std::string text;
  for (int shift = 8 * (octets - 1); shift >= 0; shift -= 8)
    text += static_cast<char>(value >> shift & 0xFF);
  return text;
}
inline std::string littleEndian(std::uint64_t value, int octets) {
  const std::string reversed = bigEndian(value, octets);
  return {reversed.rbegin(), reversed.rend()};
}

/// A capture file with one IPv4 packet on loopback; `protocol` is 6 for TCP, 17 for UDP.
inline std::string captureOf(std::string_view segment, int protocol) {
  const auto size = static_cast<std::uint32_t>(20 + segment.size());
  std::string packet = bigEndian(0x4500, 2) + bigEndian(size, 2) + bigEndian(0, 4) +
                       bigEndian(64, 1) + bigEndian(static_cast<std::uint32_t>(protocol), 1) +
                       bigEndian(0, 2) + bigEndian(0x7F000001, 4) + bigEndian(0x7F000001, 4);
  packet += segment;
  constexpr std::uint32_t kRawIp = 101;
  return littleEndian(0xA1B2C3D4, 4) + littleEndian(2, 2) + littleEndian(4, 2) +
         littleEndian(0, 8) + littleEndian(262144, 4) + littleEndian(kRawIp, 4) +
         littleEndian(0, 8) + littleEndian(size, 4) + littleEndian(size, 4) + packet;
}

/// A TCP segment with data, from port 40000.
inline std::string tcpSegment(unsigned port, std::string_view data) {
  return bigEndian(40000, 2) + bigEndian(port, 2) + bigEndian(1, 4) + bigEndian(1, 4) +
         bigEndian(0x5018, 2) + bigEndian(65535, 2) + bigEndian(0, 4) + std::string(data);
}

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_PCAP_H
