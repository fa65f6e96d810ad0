// Segmentation and reassembly of WTP messages: packet groups on the way out, packets in any order
// on the way in.  Neither half knows timers or PDU headers.  [WAP-224 7.14]
#ifndef MMSBRIX_WAPSTACK_WTP_SEGMENTS_H
#define MMSBRIX_WAPSTACK_WTP_SEGMENTS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "wsp/octets.h"

namespace mmsbrix::wtp {

/// A message on its way out, in groups of packets of which one is outstanding at a time.  The first
/// group is a single packet, so that a lost invoke is itself what is repeated; groups double while
/// they get through and halve when packets were lost.
class SegmentSender {
 public:
  SegmentSender() = default;
  /// `data` must fit into kMaxSegments packets; see packets().
  SegmentSender(std::vector<std::uint8_t> data, std::size_t segmentOctets,
                std::size_t maxGroupSegments);

  /// Packets that `octets` take, at least 1.
  [[nodiscard]] static std::size_t packets(std::size_t octets, std::size_t segmentOctets) noexcept;
  [[nodiscard]] bool segmented() const noexcept { return count_ > 1; }
  [[nodiscard]] const std::vector<std::uint8_t>& data() const noexcept { return data_; }

  /// True when the group that nextGroup() would make outstanding ends the message.
  [[nodiscard]] bool nextEnds() const noexcept { return next_ + nextSize() >= count_; }
  /// Makes the next group the outstanding one.
  void nextGroup() noexcept;
  /// True when an Ack with this packet number, or without one, acknowledges the outstanding group.
  [[nodiscard]] bool acknowledges(std::optional<std::uint8_t> psn) const noexcept;
  void acknowledged() noexcept { pending_ = false; }
  /// Packets were lost: later groups are smaller.
  void lost() noexcept { sawLoss_ = true; }
  /// The peer's limit of octets in a group; a group still has one packet at least.
  void limitGroup(std::size_t octets) noexcept;

  [[nodiscard]] std::uint8_t groupFirst() const noexcept {
    return static_cast<std::uint8_t>(first_);
  }
  [[nodiscard]] std::uint8_t groupLast() const noexcept {
    return static_cast<std::uint8_t>(next_ - 1);
  }
  [[nodiscard]] std::size_t groupOctets() const noexcept;
  /// True for a packet of the group that is outstanding.
  [[nodiscard]] bool outstanding(std::uint8_t psn) const noexcept;
  [[nodiscard]] bool endsGroup(std::uint8_t psn) const noexcept { return psn + 1u == next_; }
  [[nodiscard]] bool endsMessage(std::uint8_t psn) const noexcept { return psn + 1u == count_; }
  [[nodiscard]] Octets packet(std::uint8_t psn) const noexcept;

 private:
  [[nodiscard]] std::size_t nextSize() const noexcept;

  std::vector<std::uint8_t> data_;
  std::size_t segmentOctets_ = 1;
  std::size_t count_ = 0;
  std::size_t first_ = 0;  // of the outstanding group
  std::size_t next_ = 0;   // one past it
  std::size_t groupSize_ = 1;
  std::size_t maxGroupSize_ = 1;
  bool pending_ = false;  // the group is outstanding
  bool sawLoss_ = false;  // in the outstanding group
};

/// What a packet did to the message it belongs to.
enum class Arrival : std::uint8_t {
  nothing,    ///< a duplicate, or a packet that cannot belong here
  stored,     ///< kept; more is to come
  hole,       ///< a group end is known and packets before it are missing
  groupDone,  ///< all packets up to a group end are there
  repeated,   ///< the end of a complete group came again: its Ack was lost
  complete,   ///< the message is there
  tooLarge,   ///< above the limit; nothing more is kept
};

/// One packet as it came.
struct Packet {
  std::uint8_t psn = 0;
  bool groupEnd = false;
  bool last = false;
  bool resent = false;
  Octets data;
};

/// A message on its way in.  Keeps at most the octets it was allowed, whatever is sent to it.
class Reassembly {
 public:
  explicit Reassembly(std::size_t maxOctets) noexcept : maxOctets_(maxOctets) {}

  /// `total` is the size that the peer announced for the message, if it did.
  Arrival add(const Packet& packet, std::optional<std::uint32_t> total);
  /// The packets that are missing up to the end that is known, in order.
  [[nodiscard]] std::vector<std::uint8_t> missing() const;
  /// The end of the last complete group, or of the message.
  [[nodiscard]] std::uint8_t acknowledgedPsn() const noexcept { return doneEnd_.value_or(0); }
  /// True when the message came in more than one packet.
  [[nodiscard]] bool segmented() const noexcept { return next_ > 1 || !complete(); }
  [[nodiscard]] bool complete() const noexcept { return last_ && next_ > *last_; }
  /// Hands over the message; what decides about late packets stays.
  [[nodiscard]] std::vector<std::uint8_t> take() noexcept { return std::move(message_); }

 private:
  std::size_t maxOctets_;
  std::vector<std::uint8_t> message_;  // the packets before next_
  std::map<std::uint8_t, std::vector<std::uint8_t>> ahead_;
  std::size_t aheadOctets_ = 0;
  std::size_t next_ = 0;                 // first packet that is not in message_
  std::optional<std::uint8_t> end_;      // the highest group end seen
  std::optional<std::uint8_t> last_;     // the end of the message
  std::optional<std::uint8_t> doneEnd_;  // the end of the last complete group
};

}  // namespace mmsbrix::wtp

#endif  // MMSBRIX_WAPSTACK_WTP_SEGMENTS_H
