#include "hal/alsa/sample_conversion.h"

#include <bit>
#include <cmath>
#include <cstring>

namespace tolvane::hal::alsa {

static_assert(std::endian::native == std::endian::little, "samples are copied to and from cards as they are");

namespace {

/// A sample of `Bits` bits in the lowest of `Bytes` bytes.
template <int Bits, std::size_t Bytes>
struct IntegerSample {
  static constexpr std::size_t kBytes = Bytes;
  static constexpr float kScale = static_cast<float>(std::uint32_t{1} << (Bits - 1));
  static constexpr std::int32_t kMax = static_cast<std::int32_t>((std::uint32_t{1} << (Bits - 1)) - 1);
  static constexpr std::int32_t kMin = -kMax - 1;
  static constexpr int kUnusedBits = 32 - Bits;

  static float load(const std::byte* from) noexcept {
    std::uint32_t word = 0;
    std::memcpy(&word, from, Bytes);
    // Shift up to the top, then arithmetically down: the sign replaces whatever was in the unused bits.
    const auto sample = static_cast<std::int32_t>(word << kUnusedBits) >> kUnusedBits;
    return static_cast<float>(sample) / kScale;
  }

  static void store(float value, std::byte* to) noexcept {
    const std::int32_t sample = round(value * kScale);
    std::memcpy(to, &sample, Bytes);
  }

  static std::int32_t round(float scaled) noexcept {
    if (scaled >= kScale) return kMax;
    if (scaled <= -kScale) return kMin;
    if (std::isnan(scaled)) return 0;
    const auto rounded = static_cast<std::int32_t>(std::nearbyint(scaled));
    return rounded > kMax ? kMax : rounded;
  }
};

struct FloatSample {
  static constexpr std::size_t kBytes = sizeof(float);
  static float load(const std::byte* from) noexcept {
    float sample = 0.0F;
    std::memcpy(&sample, from, sizeof sample);
    return sample;
  }
  static void store(float value, std::byte* to) noexcept { std::memcpy(to, &value, sizeof value); }
};

/// Calls `function` with the format's sample type.
template <typename Function>
auto withSample(SampleFormat format, Function function) noexcept {
  switch (format) {
    case SampleFormat::s16:
      return function(IntegerSample<16, 2>{});
    case SampleFormat::s24:
      return function(IntegerSample<24, 4>{});
    case SampleFormat::s24Packed:
      return function(IntegerSample<24, 3>{});
    case SampleFormat::s20Packed:
      return function(IntegerSample<20, 3>{});
    case SampleFormat::s32:
      return function(IntegerSample<32, 4>{});
    case SampleFormat::float32:
      break;
  }
  return function(FloatSample{});
}

}  // namespace

std::size_t sampleBytes(SampleFormat format) noexcept {
  return withSample(format, [](auto sample) { return decltype(sample)::kBytes; });
}

void toFloat(SampleFormat format, const std::byte* from, std::size_t strideBytes, float* to,
             std::size_t frames) noexcept {
  withSample(format, [=](auto sample) {
    for (std::size_t f = 0; f < frames; ++f) to[f] = decltype(sample)::load(from + f * strideBytes);
  });
}

void fromFloat(SampleFormat format, const float* from, std::byte* to, std::size_t strideBytes,
               std::size_t frames) noexcept {
  withSample(format, [=](auto sample) {
    for (std::size_t f = 0; f < frames; ++f) decltype(sample)::store(from[f], to + f * strideBytes);
  });
}

void writeSilence(SampleFormat format, std::byte* to, std::size_t strideBytes, std::size_t frames) noexcept {
  const std::size_t bytes = sampleBytes(format);
  for (std::size_t f = 0; f < frames; ++f) std::memset(to + f * strideBytes, 0, bytes);
}

}  // namespace tolvane::hal::alsa
