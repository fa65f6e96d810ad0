// The timers, counters and limits of the transaction layer.
#ifndef MMSBRIX_WAPSTACK_WTP_SETTINGS_H
#define MMSBRIX_WAPSTACK_WTP_SETTINGS_H

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace mmsbrix::wtp {

using TimePoint = std::chrono::steady_clock::time_point;
using Duration = std::chrono::milliseconds;

/// Packets of one message: the sequence number has eight bits and does not wrap.  [WAP-224 7.14]
inline constexpr std::size_t kMaxSegments = 256;
/// Octets of one datagram over UDP and IPv4.
inline constexpr std::size_t kMaxDatagram = 65507;
/// Octets of a message that are kept while it is put together, unless set lower.
inline constexpr std::size_t kMaxReassembly = 4u << 20;
/// The same of an invoke, unless set otherwise: anybody may send one, so that kMaxPeerTransactions
/// of them add up.
inline constexpr std::size_t kMaxInvoke = 64u << 10;
/// Transactions that peers may have open with us; further invokes are not heard.
inline constexpr std::size_t kMaxPeerTransactions = 256;
/// Transactions that we may have open, those that only wait for late results included.
inline constexpr std::size_t kMaxOwnTransactions = 4096;
/// Peers whose last transaction identifier is remembered.
inline constexpr std::size_t kMaxCachedPeers = 256;
/// Transactions in a row whose TID a peer asks about before it is told that our TIDs begin anew.
inline constexpr unsigned kDoubtsBeforeNewTid = 3;
/// How long the network may keep a packet, and how many verified TIDs are remembered meanwhile.
inline constexpr Duration kPacketLifetime{120000};
inline constexpr std::size_t kMaxVerifiedTids = 1024;

/// Times are those that the standard gives for bearers that route IP.  [WAP-224 A]
struct Settings {
  Duration baseAck{2000};           ///< before a hold-on Ack
  Duration shortAck{0};             ///< before the Ack of a class 1 invoke
  Duration shortAckByUser{1000};    ///< the same when the user is to acknowledge
  Duration longAck{4000};           ///< before the Ack of a result
  Duration baseRetry{5000};         ///< after an invoke of class 2
  Duration shortRetry{3000};        ///< after an invoke of class 1
  Duration shortRetryByUser{4000};  ///< the same when the peer's user is to acknowledge
  Duration longRetry{7000};         ///< after a result
  Duration groupRetry{3000};        ///< after a packet group that is not the last
  Duration perKilooctet{200};       ///< added to a retry interval for each 1024 octets of its group
  Duration wait{40000};             ///< how long a finished transaction answers late packets
  Duration nackDelay{300};          ///< what missing packets are given to arrive on their own
  std::uint8_t maxRetries = 8;
  std::uint8_t maxAckExpirations = 6;

  /// Longest silence of the peer where the standard runs no timer: after a hold-on Ack, and between
  /// the packets of a message that arrives.
  Duration silenceLimit{120000};
  /// Longest time from an invoke to its result, or from a received invoke to our result's Ack.
  Duration overallLimit{600000};

  std::size_t segmentOctets = 1400;         ///< user data in one packet
  std::size_t maxGroupSegments = 16;        ///< groups grow from one packet up to this
  std::size_t maxMessage = kMaxReassembly;  ///< octets of the largest result accepted
  std::size_t maxInvoke = kMaxInvoke;       ///< the same of an invoke
  bool segmentation = true;   ///< messages may be sent and received in several packets
  bool acceptClass2 = false;  ///< answer class 2 invokes: servers only
};

}  // namespace mmsbrix::wtp

#endif  // MMSBRIX_WAPSTACK_WTP_SETTINGS_H
