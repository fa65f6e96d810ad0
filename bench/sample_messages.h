// Messages and presentations that are measured.
#ifndef MMSBRIX_BENCH_SAMPLE_MESSAGES_H
#define MMSBRIX_BENCH_SAMPLE_MESSAGES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "model/mmsg.h"

namespace mmsbrix::bench {

/// An m-notification-ind of 88 octets and an m-send-conf of 95.
std::vector<std::uint8_t> notification();
std::vector<std::uint8_t> sendConf();

/// An m-send-req without a body, of 88 octets on the wire.
CMMsg smallRequest();
/// An m-send-req with a presentation, a text and `pictures` pictures; about `octets` in all.
CMMsg requestWithPictures(int pictures, std::size_t octets);
/// An m-send-req with `parts` texts of 40 octets.
CMMsg requestWithSmallParts(int parts);

std::vector<std::uint8_t> encoded(CMMsg message);

/// A presentation with as many slides as it takes to reach `octets`.
std::string presentation(std::size_t octets);

}  // namespace mmsbrix::bench

#endif  // MMSBRIX_BENCH_SAMPLE_MESSAGES_H
