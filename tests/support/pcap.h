// Captures for a packet dissector, written by hand: packets of raw IP.
#ifndef MMSBRIX_TESTS_SUPPORT_PCAP_H
#define MMSBRIX_TESTS_SUPPORT_PCAP_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

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

/// A capture file with IPv4 packets on loopback; `protocol` is 6 for TCP, 17 for UDP.
inline std::string captureOf(const std::vector<std::string>& segments, unsigned protocol) {
  constexpr std::uint32_t kRawIp = 101;
  std::string capture = littleEndian(0xA1B2C3D4, 4) + littleEndian(2, 2) + littleEndian(4, 2) +
                        littleEndian(0, 8) + littleEndian(262144, 4) + littleEndian(kRawIp, 4);
  for (const std::string& segment : segments) {
    const std::size_t size = 20 + segment.size();
    capture += littleEndian(0, 8) + littleEndian(size, 4) + littleEndian(size, 4) +
               bigEndian(0x4500, 2) + bigEndian(size, 2) + bigEndian(0, 4) + bigEndian(64, 1) +
               bigEndian(protocol, 1) + bigEndian(0, 2) + bigEndian(0x7F000001, 4) +
               bigEndian(0x7F000001, 4) + segment;
  }
  return capture;
}

/// A TCP segment with data, from port 40000.
inline std::string tcpSegment(unsigned port, std::string_view data) {
  return bigEndian(40000, 2) + bigEndian(port, 2) + bigEndian(1, 4) + bigEndian(1, 4) +
         bigEndian(0x5018, 2) + bigEndian(65535, 2) + bigEndian(0, 4) + std::string(data);
}

/// A UDP datagram with data, without a checksum.
inline std::string udpDatagram(unsigned from, unsigned to, std::string_view data) {
  return bigEndian(from, 2) + bigEndian(to, 2) + bigEndian(8 + data.size(), 2) + bigEndian(0, 2) +
         std::string(data);
}
/// The same from port 40000.
inline std::string udpDatagram(unsigned port, std::string_view data) {
  return udpDatagram(40000, port, data);
}

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_PCAP_H
