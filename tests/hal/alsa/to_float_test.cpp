// Converts a card's samples to floats: exact up to 24 bits, whatever is in the unused bytes.
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

float read(SampleFormat format, const std::vector<std::uint8_t>& bytes) {
  float value = 99.0F;
  toFloat(format, reinterpret_cast<const std::byte*>(bytes.data()), 0, &value, 1);
  return value;
}

TEST(ToFloat, SixteenBits) {
  EXPECT_EQ(read(SampleFormat::s16, {0x00, 0x00}), 0.0F);
  EXPECT_EQ(read(SampleFormat::s16, {0x01, 0x00}), 1.0F / 32768.0F);
  EXPECT_EQ(read(SampleFormat::s16, {0xFF, 0xFF}), -1.0F / 32768.0F);
  EXPECT_EQ(read(SampleFormat::s16, {0x00, 0x40}), 0.5F);
  EXPECT_EQ(read(SampleFormat::s16, {0xFF, 0x7F}), 32767.0F / 32768.0F);
  EXPECT_EQ(read(SampleFormat::s16, {0x00, 0x80}), -1.0F);
}

TEST(ToFloat, TwentyFourBitsInThreeBytes) {
  EXPECT_EQ(read(SampleFormat::s24Packed, {0x00, 0x00, 0x00}), 0.0F);
  EXPECT_EQ(read(SampleFormat::s24Packed, {0x01, 0x00, 0x00}), 1.0F / 8388608.0F);
  EXPECT_EQ(read(SampleFormat::s24Packed, {0xFF, 0xFF, 0xFF}), -1.0F / 8388608.0F);
  EXPECT_EQ(read(SampleFormat::s24Packed, {0x56, 0x34, 0x12}), 0x123456 / 8388608.0F);
  EXPECT_EQ(read(SampleFormat::s24Packed, {0xFF, 0xFF, 0x7F}), 8388607.0F / 8388608.0F);
  EXPECT_EQ(read(SampleFormat::s24Packed, {0x00, 0x00, 0x80}), -1.0F);
}

TEST(ToFloat, TwentyBitsInThreeBytesWhateverTheUpperFourBitsAre) {
  for (const unsigned upper : {0x00U, 0x70U, 0x80U, 0xF0U}) {
    const auto third = [=](unsigned lower) { return static_cast<std::uint8_t>(upper | lower); };
    EXPECT_EQ(read(SampleFormat::s20Packed, {0x00, 0x00, third(0x0)}), 0.0F);
    EXPECT_EQ(read(SampleFormat::s20Packed, {0x01, 0x00, third(0x0)}), 1.0F / 524288.0F);
    EXPECT_EQ(read(SampleFormat::s20Packed, {0xFF, 0xFF, third(0xF)}), -1.0F / 524288.0F);
    EXPECT_EQ(read(SampleFormat::s20Packed, {0x45, 0x23, third(0x1)}), 0x12345 / 524288.0F);
    EXPECT_EQ(read(SampleFormat::s20Packed, {0xFF, 0xFF, third(0x7)}), 524287.0F / 524288.0F);
    EXPECT_EQ(read(SampleFormat::s20Packed, {0x00, 0x00, third(0x8)}), -1.0F);
  }
}

TEST(ToFloat, TwentyFourBitsInFourBytesWhateverTheFourthIs) {
  for (const std::uint8_t fourth : std::vector<std::uint8_t>{0x00, 0x7F, 0x80, 0xFF}) {
    EXPECT_EQ(read(SampleFormat::s24, {0x01, 0x00, 0x00, fourth}), 1.0F / 8388608.0F);
    EXPECT_EQ(read(SampleFormat::s24, {0xFF, 0xFF, 0xFF, fourth}), -1.0F / 8388608.0F);
    EXPECT_EQ(read(SampleFormat::s24, {0xFF, 0xFF, 0x7F, fourth}), 8388607.0F / 8388608.0F);
    EXPECT_EQ(read(SampleFormat::s24, {0x00, 0x00, 0x80, fourth}), -1.0F);
  }
}

TEST(ToFloat, ThirtyTwoBits) {
  EXPECT_EQ(read(SampleFormat::s32, {0x00, 0x00, 0x00, 0x00}), 0.0F);
  EXPECT_EQ(read(SampleFormat::s32, {0x01, 0x00, 0x00, 0x00}), std::ldexp(1.0F, -31));
  EXPECT_EQ(read(SampleFormat::s32, {0x00, 0x00, 0x00, 0x80}), -1.0F);
  EXPECT_EQ(read(SampleFormat::s32, {0x00, 0xFF, 0xFF, 0x7F}), 8388607.0F / 8388608.0F);
  // The nearest floats, halves to the even one: 2^31 - 1, 2^24 + 1 and 2^24 + 3.
  EXPECT_EQ(read(SampleFormat::s32, {0xFF, 0xFF, 0xFF, 0x7F}), 1.0F);
  EXPECT_EQ(read(SampleFormat::s32, {0x01, 0x00, 0x00, 0x01}), 16777216.0F / 2147483648.0F);
  EXPECT_EQ(read(SampleFormat::s32, {0x03, 0x00, 0x00, 0x01}), 16777220.0F / 2147483648.0F);
}

TEST(ToFloat, FloatIsCopiedBitForBit) {
  for (const std::uint32_t bits :
       {0x00000000U, 0x80000000U, 0x3F800001U, 0x00000001U, 0x7F800000U, 0xC2C80000U, 0x7FC01234U}) {
    std::vector<std::uint8_t> bytes(4);
    std::memcpy(bytes.data(), &bits, 4);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(read(SampleFormat::float32, bytes)), bits);
  }
}

}  // namespace
}  // namespace tolvane::hal::alsa
