#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tolvane::hal::pipewire {

/// One buffer of all channels, frame by frame, of one buffer a channel; a null channel is silent. `to` has
/// room for `frames` of each channel and overlaps none of them. The samples' bits are kept. [any-thread]
void interleave(std::span<float* const> channels, std::uint32_t frames, float* to) noexcept;

/// The way back; a null channel is left out. [any-thread]
void deinterleave(const float* from, std::uint32_t frames, std::span<float* const> channels) noexcept;

}  // namespace tolvane::hal::pipewire
