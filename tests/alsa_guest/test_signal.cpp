#include "alsa_guest/test_signal.h"

#include <cstring>

namespace tolvane::test {

std::int32_t signalSample(std::size_t channel, std::uint16_t frame) {
  if (channel == 0) return std::int32_t{static_cast<std::int16_t>(frame)} * 256 + 0x5A;
  std::uint32_t bits = static_cast<std::uint32_t>(channel) * 65536U + frame;
  bits *= 2654435761U;
  bits ^= bits >> 15;
  bits *= 2246822519U;
  return static_cast<std::int32_t>(bits | 0x10000U) >> 8;
}

std::size_t bytesOf(snd_pcm_format_t format) {
  if (format == SND_PCM_FORMAT_S16_LE) return 2;
  return format == SND_PCM_FORMAT_S24_3LE ? 3 : 4;
}

void encode(snd_pcm_format_t format, std::int32_t sample, std::byte* to) {
  if (format == SND_PCM_FORMAT_FLOAT_LE) {
    const float value = static_cast<float>(sample) / 8388608.0F;
    std::memcpy(to, &value, sizeof value);
    return;
  }
  std::int32_t stored = sample;
  if (format == SND_PCM_FORMAT_S16_LE) stored = sample >> 8;
  if (format == SND_PCM_FORMAT_S32_LE) stored = sample * 256;
  std::memcpy(to, &stored, bytesOf(format));
}

std::uint16_t upperBits(snd_pcm_format_t format, const std::byte* from) {
  std::int32_t stored = 0;
  std::memcpy(&stored, from, bytesOf(format));
  switch (format) {
    case SND_PCM_FORMAT_S16_LE:
      return static_cast<std::uint16_t>(stored);
    case SND_PCM_FORMAT_S32_LE:
      return static_cast<std::uint16_t>(static_cast<std::uint32_t>(stored) >> 16);
    case SND_PCM_FORMAT_FLOAT_LE: {
      float value = 0.0F;
      std::memcpy(&value, from, sizeof value);
      const auto sample = static_cast<std::int32_t>(value * 8388608.0F);
      return static_cast<std::uint16_t>(sample >> 8);
    }
    default:
      return static_cast<std::uint16_t>(stored >> 8);
  }
}

}  // namespace tolvane::test
