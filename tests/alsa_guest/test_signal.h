// A signal whose every sample encodes its channel and frame, in each format that a card has.
#pragma once

#include <cstddef>
#include <cstdint>

#include <alsa/asoundlib.h>

namespace tolvane::test {

/// A channel's 24-bit sample. On channel 0 the upper 16 bits count the frames; on the others they are never
/// all zero. The signal repeats after 65536 frames.
[[nodiscard]] std::int32_t signalSample(std::size_t channel, std::uint16_t frame);

/// The bytes of a sample as the format stores it.
[[nodiscard]] std::size_t bytesOf(snd_pcm_format_t format);
void encode(snd_pcm_format_t format, std::int32_t sample, std::byte* to);
/// The upper 16 bits of the sample stored there.
[[nodiscard]] std::uint16_t upperBits(snd_pcm_format_t format, const std::byte* from);

}  // namespace tolvane::test
