// Where samples lie: interleaved with other channels, or one channel's samples contiguous.
#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "hal/alsa/channel_buffers.h"
#include "hal/alsa/sample_conversion.h"

namespace tolvane::hal::alsa {
namespace {

class SampleLayout : public testing::TestWithParam<SampleFormat> {
 protected:
  static constexpr std::size_t kChannels = 3;
  static constexpr std::size_t kFrames = 5;
  [[nodiscard]] std::size_t size() const { return sampleBytes(GetParam()); }

  /// A different value for each sample, exact in every format.
  static float value(std::size_t channel, std::size_t frame) {
    return static_cast<float>(static_cast<int>(channel * 16 + frame) - 20) / 128.0F;
  }
  static std::vector<float> values(std::size_t channel) {
    std::vector<float> of(kFrames);
    for (std::size_t f = 0; f < kFrames; ++f) of[f] = value(channel, f);
    return of;
  }
};

TEST_P(SampleLayout, InterleavedChannelsDoNotTouchEachOther) {
  std::vector<std::byte> memory(kChannels * kFrames * size(), std::byte{0xA5});
  const std::size_t stride = kChannels * size();
  for (std::size_t c = 0; c < kChannels; ++c) {
    fromFloat(GetParam(), values(c).data(), memory.data() + c * size(), stride, kFrames);
    for (std::size_t other = c + 1; other < kChannels; ++other) {
      for (std::size_t f = 0; f < kFrames; ++f) {
        const std::byte* const sample = memory.data() + f * stride + other * size();
        EXPECT_EQ(std::vector<std::byte>(sample, sample + size()),
                  std::vector<std::byte>(size(), std::byte{0xA5}));
      }
    }
  }
  for (std::size_t c = 0; c < kChannels; ++c) {
    std::vector<float> read(kFrames);
    toFloat(GetParam(), memory.data() + c * size(), stride, read.data(), kFrames);
    EXPECT_EQ(read, values(c));
  }
}

TEST_P(SampleLayout, ChannelsOneAfterAnother) {
  // Use an odd address: a card promises no alignment.
  std::vector<std::byte> memory(1 + kChannels * kFrames * size() + 1, std::byte{0xA5});
  const auto first = [&](std::size_t channel) { return memory.data() + 1 + channel * kFrames * size(); };
  for (std::size_t c = 0; c < kChannels; ++c) {
    fromFloat(GetParam(), values(c).data(), first(c), size(), kFrames);
  }
  for (std::size_t c = 0; c < kChannels; ++c) {
    std::vector<float> read(kFrames);
    toFloat(GetParam(), first(c), size(), read.data(), kFrames);
    EXPECT_EQ(read, values(c));
  }
  EXPECT_EQ(memory.front(), std::byte{0xA5});
  EXPECT_EQ(memory.back(), std::byte{0xA5});
}

TEST_P(SampleLayout, SilenceIsZerosInItsOwnSamplesAlone) {
  std::vector<std::byte> memory(2 * kFrames * size(), std::byte{0xA5});
  writeSilence(GetParam(), memory.data() + size(), 2 * size(), kFrames);
  for (std::size_t f = 0; f < kFrames; ++f) {
    for (std::size_t b = 0; b < size(); ++b) {
      EXPECT_EQ(memory[2 * f * size() + b], std::byte{0xA5});
      EXPECT_EQ(memory[(2 * f + 1) * size() + b], std::byte{0});
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, SampleLayout,
                         testing::Values(SampleFormat::s16, SampleFormat::s24, SampleFormat::s24Packed,
                                         SampleFormat::s20Packed, SampleFormat::s32, SampleFormat::float32));

TEST(SampleBytes, OfEachFormat) {
  EXPECT_EQ(sampleBytes(SampleFormat::s16), 2U);
  EXPECT_EQ(sampleBytes(SampleFormat::s24), 4U);
  EXPECT_EQ(sampleBytes(SampleFormat::s24Packed), 3U);
  EXPECT_EQ(sampleBytes(SampleFormat::s20Packed), 3U);
  EXPECT_EQ(sampleBytes(SampleFormat::s32), 4U);
  EXPECT_EQ(sampleBytes(SampleFormat::float32), 4U);
}

TEST(ChannelBuffersTest, ListsAStreamOfOneChannelEach) {
  ChannelBuffers buffers(3, 100);
  const AudioBufferList& list = buffers.list();
  ASSERT_EQ(list.mNumberBuffers, 3U);
  for (UInt32 b = 0; b < 3; ++b) {
    EXPECT_EQ(list.mBuffers[b].mNumberChannels, 1U);
    EXPECT_EQ(list.mBuffers[b].mDataByteSize, 400U);
    EXPECT_EQ(list.mBuffers[b].mData, buffers.channel(b));
  }
  EXPECT_GE(buffers.channel(1) - buffers.channel(0), 100);
  EXPECT_GE(buffers.channel(2) - buffers.channel(1), 100);
}

TEST(ChannelBuffersTest, EachChannelBeginsOnACacheLine) {
  for (const std::size_t frames : {1U, 16U, 17U, 100U}) {
    ChannelBuffers buffers(3, frames);
    for (std::size_t c = 0; c < 3; ++c) {
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffers.channel(c)) % 64, 0U) << frames;
    }
  }
}

TEST(ChannelBuffersTest, OfNoChannels) {
  ChannelBuffers buffers(0, 256);
  EXPECT_EQ(buffers.list().mNumberBuffers, 0U);
}

}  // namespace
}  // namespace tolvane::hal::alsa
