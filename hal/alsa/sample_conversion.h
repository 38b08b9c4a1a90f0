// Converts between a card's samples and 32-bit float, where full scale is from -1 to 1.
//
// To float: divides a sample of n bits by 2^(n-1). This is exact up to 24 bits; 32 bits give the nearest
// float. FLOAT is copied bit for bit.
// From float: multiplies by 2^(n-1), rounds to the nearest integer, halves to the even one, and saturates at
// the ends of the format's range. NaN becomes 0. FLOAT is copied bit for bit, beyond full scale too.
// So a round trip keeps every sample of up to 24 bits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tolvane::hal::alsa {

/// How a card stores one sample, in little-endian order.
enum class SampleFormat : std::uint8_t {
  s16,        // 2 bytes
  s24,        // 4 bytes, sample in the lower three; the fourth is ignored on input, sign extension on output
  s24Packed,  // 3 bytes
  s20Packed,  // 3 bytes, sample in the lower 20 bits; the upper 4 as in the fourth byte of s24
  s32,        // 4 bytes
  float32,    // 4 bytes
};

/// Bytes per sample. [any-thread]
[[nodiscard]] std::size_t sampleBytes(SampleFormat format) noexcept;

/// Reads `frames` samples of one channel. The first is at `from`, each other one `strideBytes` after its
/// predecessor, at any alignment. Wait-free. [any-thread]
void toFloat(SampleFormat format, const std::byte* from, std::size_t strideBytes, float* to,
             std::size_t frames) noexcept;

/// Writes samples in the same layout; leaves the bytes between them alone. Wait-free. [any-thread]
void fromFloat(SampleFormat format, const float* from, std::byte* to, std::size_t strideBytes,
               std::size_t frames) noexcept;

/// Writes zeros in the same layout. Wait-free. [any-thread]
void writeSilence(SampleFormat format, std::byte* to, std::size_t strideBytes, std::size_t frames) noexcept;

}  // namespace tolvane::hal::alsa
