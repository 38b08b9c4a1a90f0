#include "hal/pipewire/interleaving.h"

#include <algorithm>

namespace tolvane::hal::pipewire {

namespace {

// Frames copied of one channel before the next: few enough that their cache lines stay in the L1 cache.
constexpr std::uint32_t kTileFrames = 32;

}  // namespace

void interleave(std::span<float* const> channels, std::uint32_t frames, float* to) noexcept {
  const std::size_t stride = channels.size();
  for (std::uint32_t first = 0; first < frames; first += kTileFrames) {
    const std::uint32_t end = std::min(frames, first + kTileFrames);
    for (std::size_t c = 0; c < stride; ++c) {
      const float* const from = channels[c];
      for (std::uint32_t f = first; f < end; ++f) to[f * stride + c] = from != nullptr ? from[f] : 0.0F;
    }
  }
}

void deinterleave(const float* from, std::uint32_t frames, std::span<float* const> channels) noexcept {
  const std::size_t stride = channels.size();
  for (std::uint32_t first = 0; first < frames; first += kTileFrames) {
    const std::uint32_t end = std::min(frames, first + kTileFrames);
    for (std::size_t c = 0; c < stride; ++c) {
      float* const to = channels[c];
      if (to == nullptr) continue;
      for (std::uint32_t f = first; f < end; ++f) to[f] = from[f * stride + c];
    }
  }
}

}  // namespace tolvane::hal::pipewire
