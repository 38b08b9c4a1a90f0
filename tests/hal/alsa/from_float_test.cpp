// Converts floats to a card's samples: rounded to the nearest, halves to even, and saturated.
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "hal/alsa/sample_conversion.h"

namespace tolvane::hal::alsa {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr SampleFormat kIntegers[] = {SampleFormat::s16, SampleFormat::s24, SampleFormat::s24Packed,
                                      SampleFormat::s20Packed, SampleFormat::s32};

int bitsOf(SampleFormat format) {
  if (format == SampleFormat::s16) return 16;
  if (format == SampleFormat::s20Packed) return 20;
  return format == SampleFormat::s32 ? 32 : 24;
}

/// The sample that is written, as an integer.
std::int64_t written(SampleFormat format, float value) {
  std::array<std::byte, 4> bytes{};
  fromFloat(format, &value, bytes.data(), 0, 1);
  std::int32_t word = 0;
  std::memcpy(&word, bytes.data(), sampleBytes(format));
  const int unused = 32 - 8 * static_cast<int>(sampleBytes(format));
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(word) << unused) >> unused;
}

float lsb(SampleFormat format) {
  return std::ldexp(1.0F, 1 - bitsOf(format));
}

TEST(FromFloat, ZeroIsZero) {
  for (const SampleFormat format : kIntegers) {
    EXPECT_EQ(written(format, 0.0F), 0);
    EXPECT_EQ(written(format, -0.0F), 0);
  }
}

TEST(FromFloat, WholeStepsAreKept) {
  for (const SampleFormat format : kIntegers) {
    for (const int steps : {1, -1, 2, -2, 100, -32767, 12345}) {
      EXPECT_EQ(written(format, static_cast<float>(steps) * lsb(format)), steps);
    }
    EXPECT_EQ(written(format, 0.5F), std::int64_t{1} << (bitsOf(format) - 2));
  }
}

TEST(FromFloat, RoundsToTheNearestAndHalvesToEven) {
  for (const SampleFormat format : kIntegers) {
    const auto at = [&](float steps) { return written(format, steps * lsb(format)); };
    EXPECT_EQ(at(0.25F), 0);
    EXPECT_EQ(at(0.5F), 0);
    EXPECT_EQ(at(0.75F), 1);
    EXPECT_EQ(at(1.5F), 2);
    EXPECT_EQ(at(2.5F), 2);
    EXPECT_EQ(at(2.75F), 3);
    EXPECT_EQ(at(-0.5F), 0);
    EXPECT_EQ(at(-0.75F), -1);
    EXPECT_EQ(at(-1.5F), -2);
    EXPECT_EQ(at(-2.5F), -2);
    EXPECT_EQ(at(-3.5F), -4);
  }
}

TEST(FromFloat, SaturatesBeyondFullScale) {
  for (const SampleFormat format : kIntegers) {
    const std::int64_t max = (std::int64_t{1} << (bitsOf(format) - 1)) - 1;
    EXPECT_EQ(written(format, 1.0F), max);
    EXPECT_EQ(written(format, 1.5F), max);
    EXPECT_EQ(written(format, 3.4e38F), max);
    EXPECT_EQ(written(format, kInfinity), max);
    EXPECT_EQ(written(format, -1.0F), -max - 1);
    EXPECT_EQ(written(format, -1.5F), -max - 1);
    EXPECT_EQ(written(format, -kInfinity), -max - 1);
  }
}

TEST(FromFloat, SaturatesWhatRoundsToFullScale) {
  EXPECT_EQ(written(SampleFormat::s16, 32767.25F / 32768.0F), 32767);
  EXPECT_EQ(written(SampleFormat::s16, 32767.5F / 32768.0F), 32767);
  EXPECT_EQ(written(SampleFormat::s16, 32767.75F / 32768.0F), 32767);
  EXPECT_EQ(written(SampleFormat::s24, std::nextafter(1.0F, 0.0F)), 8388607);
  EXPECT_EQ(written(SampleFormat::s32, std::nextafter(1.0F, 0.0F)), 2147483520);
}

TEST(FromFloat, NotANumberIsSilence) {
  for (const SampleFormat format : kIntegers) {
    EXPECT_EQ(written(format, kNan), 0);
    EXPECT_EQ(written(format, -kNan), 0);
  }
}

TEST(FromFloat, TwentyFourBitsInFourBytesExtendTheSign) {
  const float value = -1.0F / 8388608.0F;
  std::array<std::uint8_t, 4> bytes{};
  fromFloat(SampleFormat::s24, &value, reinterpret_cast<std::byte*>(bytes.data()), 0, 1);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(FromFloat, TwentyBitsInThreeBytesExtendTheSign) {
  const float value = -1.0F / 524288.0F;
  std::array<std::uint8_t, 4> bytes{0, 0, 0, 0xA5};
  fromFloat(SampleFormat::s20Packed, &value, reinterpret_cast<std::byte*>(bytes.data()), 0, 1);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{0xFF, 0xFF, 0xFF, 0xA5}));
}

TEST(FromFloat, EverySampleOfTwentyBitsComesBack) {
  for (std::int32_t sample = -524288; sample <= 524287; ++sample) {
    float value = 0.0F;
    toFloat(SampleFormat::s20Packed, reinterpret_cast<const std::byte*>(&sample), 0, &value, 1);
    ASSERT_EQ(written(SampleFormat::s20Packed, value), sample);
  }
}

TEST(FromFloat, FloatIsCopiedBitForBit) {
  for (const float value : {0.0F, -0.0F, 1.5F, -100.0F, kInfinity, kNan, 1e-45F}) {
    std::array<std::byte, 4> bytes{};
    fromFloat(SampleFormat::float32, &value, bytes.data(), 0, 1);
    EXPECT_EQ(std::memcmp(bytes.data(), &value, 4), 0);
  }
}

TEST(FromFloat, EverySampleOfSixteenBitsComesBack) {
  for (std::int32_t sample = -32768; sample <= 32767; ++sample) {
    const auto stored = static_cast<std::int16_t>(sample);
    float value = 0.0F;
    toFloat(SampleFormat::s16, reinterpret_cast<const std::byte*>(&stored), 0, &value, 1);
    ASSERT_EQ(written(SampleFormat::s16, value), sample);
  }
}

TEST(FromFloat, EverySampleOfTwentyFourBitsComesBack) {
  std::vector<std::int32_t> samples(1U << 24);
  for (std::size_t s = 0; s < samples.size(); ++s) samples[s] = static_cast<std::int32_t>(s) - (1 << 23);
  std::vector<float> values(samples.size());
  std::vector<std::int32_t> back(samples.size());
  toFloat(SampleFormat::s24, reinterpret_cast<const std::byte*>(samples.data()), 4, values.data(),
          values.size());
  fromFloat(SampleFormat::s24, values.data(), reinterpret_cast<std::byte*>(back.data()), 4, values.size());
  EXPECT_TRUE(samples == back);
}

}  // namespace
}  // namespace tolvane::hal::alsa
