#include "wapstack/wtp_segments.h"

#include <algorithm>
#include <utility>

#include "wapstack/wtp_settings.h"

namespace mmsbrix::wtp {

SegmentSender::SegmentSender(std::vector<std::uint8_t> data, std::size_t segmentOctets,
                             std::size_t maxGroupSegments)
    : data_(std::move(data)),
      segmentOctets_(std::max<std::size_t>(segmentOctets, 1)),
      count_(packets(data_.size(), segmentOctets_)),
      maxGroupSize_(std::clamp<std::size_t>(maxGroupSegments, 1, kMaxSegments)) {}

std::size_t SegmentSender::packets(std::size_t octets, std::size_t segmentOctets) noexcept {
  return octets == 0 ? 1 : (octets - 1) / segmentOctets + 1;
}

std::size_t SegmentSender::nextSize() const noexcept {
  std::size_t size = groupSize_;
  if (next_ > 0) size = sawLoss_ ? std::max<std::size_t>(size / 2, 1) : size * 2;
  return std::min(size, maxGroupSize_);
}

void SegmentSender::nextGroup() noexcept {
  groupSize_ = nextSize();
  first_ = next_;
  next_ = std::min(next_ + groupSize_, count_);
  pending_ = true;
  sawLoss_ = false;
}

bool SegmentSender::acknowledges(std::optional<std::uint8_t> psn) const noexcept {
  return pending_ && (!psn || *psn == groupLast());
}

void SegmentSender::limitGroup(std::size_t octets) noexcept {
  maxGroupSize_ = std::clamp<std::size_t>(octets / segmentOctets_, 1, maxGroupSize_);
}

std::size_t SegmentSender::groupOctets() const noexcept {
  return std::min(next_ * segmentOctets_, data_.size()) - first_ * segmentOctets_;
}

bool SegmentSender::outstanding(std::uint8_t psn) const noexcept {
  return pending_ && psn >= first_ && psn < next_;
}

Octets SegmentSender::packet(std::uint8_t psn) const noexcept {
  const std::size_t begin = std::min(psn * segmentOctets_, data_.size());
  return Octets(data_).subspan(begin, std::min(segmentOctets_, data_.size() - begin));
}

Arrival Reassembly::add(const Packet& packet, std::optional<std::uint32_t> total) {
  if (total && *total > maxOctets_) return Arrival::tooLarge;
  if (packet.psn < next_ || ahead_.contains(packet.psn)) {
    // Only a retransmission is answered: a second copy without its mark is the network's doing.
    if (!packet.resent) return Arrival::nothing;
    if (packet.psn == doneEnd_) return Arrival::repeated;
    return packet.psn == end_ ? Arrival::hole : Arrival::nothing;
  }
  if (last_ && packet.psn > *last_) return Arrival::nothing;
  if (packet.last &&
      (packet.psn < end_.value_or(0) || (!ahead_.empty() && ahead_.rbegin()->first > packet.psn))) {
    return Arrival::nothing;
  }
  if (packet.data.size() > maxOctets_ - message_.size() - aheadOctets_) return Arrival::tooLarge;

  if (packet.last) last_ = packet.psn;
  if ((packet.groupEnd || packet.last) && (!end_ || packet.psn > *end_)) end_ = packet.psn;
  if (packet.psn == next_) {
    message_.insert(message_.end(), packet.data.begin(), packet.data.end());
    ++next_;
    for (auto it = ahead_.begin(); it != ahead_.end() && it->first == next_; ++next_) {
      message_.insert(message_.end(), it->second.begin(), it->second.end());
      aheadOctets_ -= it->second.size();
      it = ahead_.erase(it);
    }
  } else {
    ahead_.emplace(packet.psn, std::vector(packet.data.begin(), packet.data.end()));
    aheadOctets_ += packet.data.size();
  }
  if (!end_ || end_ == doneEnd_) return Arrival::stored;
  if (next_ <= *end_) return Arrival::hole;
  doneEnd_ = end_;
  return complete() ? Arrival::complete : Arrival::groupDone;
}

std::vector<std::uint8_t> Reassembly::missing() const {
  std::vector<std::uint8_t> list;
  if (!end_) return list;
  for (std::size_t psn = next_; psn <= *end_; ++psn) {
    if (!ahead_.contains(static_cast<std::uint8_t>(psn))) {
      list.push_back(static_cast<std::uint8_t>(psn));
    }
  }
  return list;
}

}  // namespace mmsbrix::wtp
