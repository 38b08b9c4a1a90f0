// Between a card's samples and 32-bit float, where full scale is from -1 to 1.
//
// To float: a sample of n bits is divided by 2^(n-1). That is exact up to 24 bits; of 32 it is the nearest
// float. FLOAT is copied bit for bit.
// From float: multiplied by 2^(n-1), rounded to the nearest integer, halves to the even one, and what is then
// beyond the format's range becomes its end (saturation); what is not a number becomes 0. FLOAT is copied bit
// for bit, beyond full scale too.
// So every sample of up to 24 bits comes back as it was.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tolvane::hal::alsa {

/// How a card stores one sample, in little-endian order.
enum class SampleFormat : std::uint8_t {
  s16,        // 2 bytes
  s24,        // 4 bytes: the lower three, the fourth being of no meaning in, and the sign's extension out
  s24Packed,  // 3 bytes
  s32,        // 4 bytes
  float32,    // 4 bytes
};

/// The bytes of a sample. [any-thread]
[[nodiscard]] std::size_t sampleBytes(SampleFormat format) noexcept;

/// Reads `frames` samples of one channel, the first at `from` and each `strideBytes` after the one before, at
/// any alignment. Wait-free. [any-thread]
void toFloat(SampleFormat format, const std::byte* from, std::size_t strideBytes, float* to,
             std::size_t frames) noexcept;

/// Writes them; the bytes in between are left alone. Wait-free. [any-thread]
void fromFloat(SampleFormat format, const float* from, std::byte* to, std::size_t strideBytes,
               std::size_t frames) noexcept;

/// Writes zeros, in the same way. Wait-free. [any-thread]
void writeSilence(SampleFormat format, std::byte* to, std::size_t strideBytes, std::size_t frames) noexcept;

}  // namespace tolvane::hal::alsa
