// The sample media of examples/media, built into the tool so that its demo needs no files.
#ifndef MMSBRIX_TOOLS_SAMPLE_MEDIA_H
#define MMSBRIX_TOOLS_SAMPLE_MEDIA_H

#include <cstdint>
#include <span>
#include <string_view>

namespace mmsbrix::tool {

struct SampleMedia {
  std::string_view name;
  std::span<const std::uint8_t> octets;
};

/// A text, a picture and a sound.
[[nodiscard]] std::span<const SampleMedia> sampleMedia() noexcept;

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_SAMPLE_MEDIA_H
