// How many frames a cycle has, and which bytes are cleared.
#include "routing_fixture.h"

namespace tolvane::test {
namespace {

using testing::Each;
using testing::ElementsAre;

using FrameCountTest = RoutingTest;

TEST_F(FrameCountTest, IsThatOfTheFirstOutputBuffer) {
  input_.add(1, 8, 1.0F);
  output_.add(1, 3, kStale).add(1, 6, kStale);
  route(0, 0);
  route(0, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(1.0F));
  EXPECT_THAT(output_.copyOf(1), ElementsAre(1.0F, 1.0F, 1.0F, 0.0F, 0.0F, 0.0F));
}

TEST_F(FrameCountTest, OfAnInterleavedBufferDividesByItsChannels) {
  input_.add(1, 8, 1.0F);
  output_.add(2, 4, kStale).add(1, 8, kStale);
  route(0, 0);
  route(0, 2);
  cycle();
  EXPECT_THAT(output_.channel(0, 0), Each(1.0F));
  EXPECT_THAT(output_.copyOf(1), ElementsAre(1.0F, 1.0F, 1.0F, 1.0F, 0.0F, 0.0F, 0.0F, 0.0F));
}

TEST_F(FrameCountTest, RoundsDownToWholeFrames) {
  input_.add(1, 8, 1.0F);
  output_.addStream(3, 8, kStale);  // two frames and two thirds
  route(0, 0);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(1.0F, 0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 0.0F));
}

TEST_F(FrameCountTest, IgnoresTheSizesOfTheInputs) {
  input_.add(1, 4, 1.0F);
  input_.buffer(0).mDataByteSize = 4;
  output_.add(1, 4, kStale);
  route(0, 0);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(1.0F));
}

TEST_F(FrameCountTest, FewerBytesThanAFrameIsSilence) {
  input_.add(1, 4, 1.0F);
  output_.addStream(3, 2, kStale).add(1, 4, kStale);
  route(0, 0);
  route(0, 3);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
  EXPECT_THAT(output_.copyOf(1), Each(0.0F));
}

TEST_F(FrameCountTest, FirstOutputBufferOfNoChannelsEndsTheCycleInSilence) {
  input_.add(1, 4, 1.0F);
  output_.addStream(0, 4, kStale).add(1, 4, kStale);
  route(0, 0);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(kStale));
  EXPECT_THAT(output_.copyOf(1), Each(0.0F));
}

TEST_F(FrameCountTest, FirstOutputBufferOfNoBytesEndsTheCycleInSilence) {
  input_.add(1, 4, 1.0F);
  output_.addStream(1, 4, kStale).add(1, 4, kStale);
  output_.buffer(0).mDataByteSize = 0;
  route(0, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(kStale));
  EXPECT_THAT(output_.copyOf(1), Each(0.0F));
}

TEST_F(FrameCountTest, FirstOutputBufferWithoutDataStillCountsByItsSize) {
  input_.add(1, 4, 1.0F);
  output_.addWithoutData(2, 3 * 2 * sizeof(float)).add(1, 4, kStale);
  route(0, 2);
  cycle();
  EXPECT_THAT(output_.copyOf(1), ElementsAre(1.0F, 1.0F, 1.0F, 0.0F));
}

TEST_F(FrameCountTest, NoOutputBufferEndsTheCycle) {
  input_.add(1, 4, 1.0F);
  route(0, 0);
  cycle();
  EXPECT_THAT(input_.copyOf(0), Each(1.0F));
}

TEST_F(FrameCountTest, NoInputBufferIsSilence) {
  output_.add(2, 4, kStale);
  route(0, 0);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
}

TEST_F(FrameCountTest, NoInputListAtAllIsSilence) {
  output_.add(2, 4, kStale);
  publish({{0, 0, 1.0F, true}});
  routeCycle(nullptr, output_.get(), &context_);
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
}

TEST_F(FrameCountTest, NoOutputListAtAllLeavesTheInputsAlone) {
  input_.add(1, 4, 1.0F);
  publish({{0, 0, 1.0F, true}});
  routeCycle(input_.get(), nullptr, &context_);
  EXPECT_THAT(input_.copyOf(0), Each(1.0F));
}

TEST_F(FrameCountTest, WholeBuffersAreClearedWithoutAnyRoute) {
  input_.add(2, 4, 1.0F);
  output_.addStream(3, 11, kStale).add(1, 7, kStale);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
  EXPECT_THAT(output_.copyOf(1), Each(0.0F));
}

TEST_F(FrameCountTest, ExactlyTheBytesOfTheBufferAreCleared) {
  input_.add(1, 4, 1.0F);
  output_.add(1, 4, kStale).add(1, 4, kStale);
  output_.buffer(1).mDataByteSize = 2 * sizeof(float) + 1;
  cycle();
  const auto bytes = std::as_bytes(output_.samples(1));
  const float stale = kStale;
  const auto* const expected = reinterpret_cast<const std::byte*>(&stale);
  for (std::size_t i = 0; i < 9; ++i) EXPECT_EQ(bytes[i], std::byte{0}) << i;
  for (std::size_t i = 9; i < bytes.size(); ++i) EXPECT_EQ(bytes[i], expected[i % 4]) << i;
}

TEST_F(FrameCountTest, OneFrameAndManyFramesAreRoutedWhole) {
  for (const std::size_t frames : {1U, 2U, 3U, 15U, 16U, 17U, 31U, 33U, 63U, 64U, 65U, 1023U, 8192U}) {
    BufferList input;
    BufferList output;
    input.add(1, frames, 0.75F);
    output.add(1, frames, kStale);
    publish({{0, 0, 2.0F, true}});
    routeCycle(input.get(), output.get(), &context_);
    EXPECT_THAT(output.copyOf(0), Each(1.5F)) << frames;
    EXPECT_TRUE(output.guardsIntact()) << frames;
  }
}

}  // namespace
}  // namespace tolvane::test
