#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tolvane::hal::pipewire {

/// Interleaves one buffer per channel into `to`. A null channel is silent. `to` has room for `frames` frames
/// of all channels and overlaps none of them. Samples are copied bit for bit. [any-thread]
void interleave(std::span<float* const> channels, std::uint32_t frames, float* to) noexcept;

/// The reverse of interleave(); skips null channels. [any-thread]
void deinterleave(const float* from, std::uint32_t frames, std::span<float* const> channels) noexcept;

}  // namespace tolvane::hal::pipewire
