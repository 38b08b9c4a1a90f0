// Interleaving and deinterleaving, bit for bit.
#include "hal/pipewire/interleaving.h"

#include <bit>
#include <cstdint>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tolvane::test {
namespace {

using hal::pipewire::deinterleave;
using hal::pipewire::interleave;

std::vector<std::uint32_t> bitsOf(const std::vector<float>& samples) {
  std::vector<std::uint32_t> bits;
  for (const float sample : samples) bits.push_back(std::bit_cast<std::uint32_t>(sample));
  return bits;
}

/// Arbitrary bits, different for each channel and frame, NaNs among them.
float anySample(std::size_t channel, std::size_t frame) {
  const auto number = static_cast<std::uint32_t>(channel * 65536 + frame);
  return std::bit_cast<float>(number * 2654435761U | (frame % 5 == 0 ? 0x7F800000U : 0U));
}

class Interleaving : public testing::TestWithParam<std::tuple<std::size_t, std::uint32_t>> {};

TEST_P(Interleaving, PutsEveryBitWhereItBelongsAndBack) {
  const auto [channels, frames] = GetParam();
  std::vector<std::vector<float>> planes(channels, std::vector<float>(frames));
  std::vector<float> expected(channels * frames);
  std::vector<float*> pointers;
  for (std::size_t c = 0; c < channels; ++c) {
    for (std::size_t f = 0; f < frames; ++f) planes[c][f] = expected[f * channels + c] = anySample(c, f);
    pointers.push_back(planes[c].data());
  }
  std::vector<float> together(channels * frames + 1, 7.0F);
  interleave(pointers, frames, together.data());
  EXPECT_EQ(together.back(), 7.0F);  // nothing was written beyond the end
  together.pop_back();
  EXPECT_EQ(bitsOf(together), bitsOf(expected));

  const auto before = planes;
  for (auto& plane : planes) std::fill(plane.begin(), plane.end(), 3.0F);
  deinterleave(expected.data(), frames, pointers);
  for (std::size_t c = 0; c < channels; ++c) EXPECT_EQ(bitsOf(planes[c]), bitsOf(before[c])) << c;
}

INSTANTIATE_TEST_SUITE_P(Sizes, Interleaving,
                         testing::Combine(testing::Values(1U, 2U, 3U, 18U, 64U),
                                          testing::Values(0U, 1U, 31U, 32U, 33U, 257U, 8192U)));

TEST(InterleavingGaps, AMissingInputIsSilentAndAMissingOutputIsLeftOut) {
  std::vector<float> first{1.0F, 2.0F};
  std::vector<float> third{5.0F, 6.0F};
  const std::vector<float*> channels{first.data(), nullptr, third.data()};
  std::vector<float> together(6, 9.0F);
  interleave(channels, 2, together.data());
  EXPECT_THAT(together, testing::ElementsAre(1.0F, 0.0F, 5.0F, 2.0F, 0.0F, 6.0F));

  const std::vector<float> given{10.0F, 11.0F, 12.0F, 13.0F, 14.0F, 15.0F};
  deinterleave(given.data(), 2, channels);
  EXPECT_THAT(first, testing::ElementsAre(10.0F, 13.0F));
  EXPECT_THAT(third, testing::ElementsAre(12.0F, 15.0F));
}

}  // namespace
}  // namespace tolvane::test
