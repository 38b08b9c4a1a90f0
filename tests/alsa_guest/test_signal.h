// A signal that says in every sample which channel and frame it is of, in each format that a card has.
#pragma once

#include <cstddef>
#include <cstdint>

#include <alsa/asoundlib.h>

namespace tolvane::test {

/// The sample of a channel, of 24 bits, with the upper 16 never all zero but on channel 0: there they count
/// the frames. It repeats after 65536 frames.
[[nodiscard]] std::int32_t signalSample(std::size_t channel, std::uint16_t frame);

/// The bytes of a sample as the format stores it.
[[nodiscard]] std::size_t bytesOf(snd_pcm_format_t format);
void encode(snd_pcm_format_t format, std::int32_t sample, std::byte* to);
/// The upper 16 bits of the sample stored there.
[[nodiscard]] std::uint16_t upperBits(snd_pcm_format_t format, const std::byte* from);

}  // namespace tolvane::test
