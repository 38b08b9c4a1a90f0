// The buffer list that a callback sees, built over single-channel buffers.
#include "hal/pipewire/stream_buffers.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tolvane::test {
namespace {

using hal::pipewire::StreamBuffers;

/// Streams of one, two and three channels, over single-channel buffers of two frames.
class StreamBuffersTest : public testing::Test {
 protected:
  void setAll() {
    for (std::size_t channel = 0; channel < planes_.size(); ++channel) {
      buffers_.set(channel, planes_[channel].data());
    }
  }

  AudioBuffer& buffer(std::size_t stream) { return buffers_.list().mBuffers[stream]; }
  float* samples(std::size_t stream) { return static_cast<float*>(buffer(stream).mData); }

  StreamBuffers buffers_{{1, 2, 3}};
  std::vector<std::vector<float>> planes_{{1, 2}, {3, 4}, {5, 6}, {7, 8}, {9, 10}, {11, 12}};
};

TEST_F(StreamBuffersTest, HasOneBufferAStreamWithItsChannelsAndBytes) {
  EXPECT_EQ(buffers_.channels(), 6U);
  setAll();
  buffers_.begin(2);
  ASSERT_EQ(buffers_.list().mNumberBuffers, 3U);
  for (std::size_t stream = 0; stream < 3; ++stream) {
    EXPECT_EQ(buffer(stream).mNumberChannels, stream + 1);
    EXPECT_EQ(buffer(stream).mDataByteSize, 2 * (stream + 1) * sizeof(float));
  }
  EXPECT_EQ(buffer(0).mData, planes_[0].data());  // a stream of one channel is not copied
}

TEST_F(StreamBuffersTest, GathersInputs) {
  setAll();
  buffers_.begin(2);
  buffers_.gather();
  EXPECT_EQ(std::vector<float>(samples(1), samples(1) + 4), (std::vector<float>{3, 5, 4, 6}));
  EXPECT_EQ(std::vector<float>(samples(2), samples(2) + 6), (std::vector<float>{7, 9, 11, 8, 10, 12}));
}

TEST_F(StreamBuffersTest, ScattersOutputs) {
  setAll();
  buffers_.begin(2);
  const std::vector<float> written{20, 21, 22, 23, 24, 25};
  std::copy(written.begin(), written.begin() + 4, samples(1));
  std::copy(written.begin(), written.end(), samples(2));
  buffers_.scatter();
  EXPECT_EQ(planes_,
            (std::vector<std::vector<float>>{{1, 2}, {20, 22}, {21, 23}, {20, 23}, {21, 24}, {22, 25}}));
}

TEST_F(StreamBuffersTest, AStreamWithoutAnyChannelIsWithoutDataUntilOneIsBack) {
  setAll();
  buffers_.set(0, nullptr);
  buffers_.set(1, nullptr);
  buffers_.set(2, nullptr);
  buffers_.set(4, nullptr);
  buffers_.begin(2);
  buffers_.gather();
  EXPECT_EQ(buffer(0).mData, nullptr);
  EXPECT_EQ(buffer(0).mDataByteSize, 2 * sizeof(float));
  EXPECT_EQ(buffer(1).mData, nullptr);
  EXPECT_EQ(buffer(1).mNumberChannels, 2U);
  EXPECT_EQ(buffer(1).mDataByteSize, 4 * sizeof(float));
  EXPECT_EQ(std::vector<float>(samples(2), samples(2) + 6), (std::vector<float>{7, 0, 11, 8, 0, 12}));
  buffers_.set(2, planes_[2].data());
  buffers_.begin(2);
  buffers_.gather();
  ASSERT_NE(buffer(1).mData, nullptr);
  EXPECT_EQ(std::vector<float>(samples(1), samples(1) + 4), (std::vector<float>{0, 5, 0, 6}));
}

TEST_F(StreamBuffersTest, SilenceIsOfTheChannelsThemselves) {
  setAll();
  buffers_.set(3, nullptr);
  buffers_.begin(1);
  buffers_.silence();
  EXPECT_EQ(planes_, (std::vector<std::vector<float>>{{0, 2}, {0, 4}, {0, 6}, {7, 8}, {0, 10}, {0, 12}}));
}

TEST_F(StreamBuffersTest, ACycleMayBeAsLongAsAnyServersIs) {
  constexpr std::uint32_t kFrames = hal::pipewire::kMaxCycleFrames;
  std::vector<float> left(kFrames, 0.25F);
  std::vector<float> right(kFrames, 0.5F);
  buffers_.set(1, left.data());
  buffers_.set(2, right.data());
  buffers_.begin(kFrames);
  buffers_.gather();
  EXPECT_EQ(samples(1)[2 * kFrames - 2], 0.25F);
  EXPECT_EQ(samples(1)[2 * kFrames - 1], 0.5F);
}

}  // namespace
}  // namespace tolvane::test
