// Which sample of which buffer a channel number means.
#include "routing_fixture.h"

namespace tolvane::test {
namespace {

using testing::Each;
using testing::ElementsAre;

class ChannelNumberingTest : public RoutingTest {
 protected:
  /// Sets sample s of stream n to 1000 n + s, so that all samples of the device differ.
  void numberInputs() {
    for (std::size_t n = 0; n < input_.size(); ++n) {
      const std::span<float> samples = input_.samples(n);
      for (std::size_t s = 0; s < samples.size(); ++s) samples[s] = static_cast<float>(1000 * n + s);
    }
  }
};

TEST_F(ChannelNumberingTest, InterleavedInputTakesEveryNthSample) {
  input_.add(2, 3);
  output_.add(1, 3, kStale).add(1, 3, kStale);
  numberInputs();
  route(0, 0);
  route(1, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(0.0F, 2.0F, 4.0F));
  EXPECT_THAT(output_.copyOf(1), ElementsAre(1.0F, 3.0F, 5.0F));
}

TEST_F(ChannelNumberingTest, InterleavedOutputLeavesTheOtherChannelsSilent) {
  input_.add(1, 3, 5.0F);
  output_.add(3, 3, kStale);
  route(0, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(0.0F, 5.0F, 0.0F, 0.0F, 5.0F, 0.0F, 0.0F, 5.0F, 0.0F));
}

TEST_F(ChannelNumberingTest, OneChannelBuffersAreNumberedInListOrder) {
  input_.add(1, 2).add(1, 2).add(1, 2);
  output_.add(1, 2, kStale).add(1, 2, kStale).add(1, 2, kStale);
  numberInputs();
  route(0, 2);
  route(1, 0);
  route(2, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(1000.0F, 1001.0F));
  EXPECT_THAT(output_.copyOf(1), ElementsAre(2000.0F, 2001.0F));
  EXPECT_THAT(output_.copyOf(2), ElementsAre(0.0F, 1.0F));
}

TEST_F(ChannelNumberingTest, BuffersOfDifferentWidthsAreNumberedOn) {
  input_.add(2, 2).add(3, 2).add(1, 2);
  output_.add(1, 2, kStale).add(2, 2, kStale).add(3, 2, kStale);
  numberInputs();
  route(1, 0);  // second of the first buffer
  route(4, 2);  // third of the second
  route(5, 5);  // the third
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(1.0F, 3.0F));
  EXPECT_THAT(output_.channel(1, 0), Each(0.0F));
  EXPECT_THAT(output_.channel(1, 1), ElementsAre(1002.0F, 1005.0F));
  EXPECT_THAT(output_.channel(2, 2), ElementsAre(2000.0F, 2001.0F));
}

TEST_F(ChannelNumberingTest, InputBufferWithoutDataShiftsThoseAfterIt) {
  input_.add(1, 2, 1.0F).addWithoutData(3).add(1, 2, 4.0F);
  output_.add(1, 2, kStale).add(1, 2, kStale);
  route(4, 0);
  route(1, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(4.0F));
  EXPECT_THAT(output_.copyOf(1), Each(0.0F)) << "a route from a channel without data is skipped";
}

TEST_F(ChannelNumberingTest, OutputBufferWithoutDataShiftsThoseAfterIt) {
  input_.add(1, 2, 1.0F);
  output_.add(1, 2, kStale).addWithoutData(2, 16).add(1, 2, kStale);
  route(0, 1);
  route(0, 3);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
  EXPECT_THAT(output_.copyOf(2), Each(1.0F));
}

TEST_F(ChannelNumberingTest, BufferOfNoChannelsUsesNoNumber) {
  input_.add(1, 2, 1.0F);
  input_.addStream(0, 4, 9.0F);
  input_.add(1, 2, 2.0F);
  output_.add(1, 2, kStale);
  output_.addStream(0, 4, kStale);
  output_.add(1, 2, kStale);
  route(1, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
  EXPECT_THAT(output_.copyOf(1), Each(kStale)) << "a buffer of no channels is not cleared";
  EXPECT_THAT(output_.copyOf(2), Each(2.0F));
}

TEST_F(ChannelNumberingTest, ChannelsBeyondTheContextsCountsAreNeverRouted) {
  context_ = initialContext(2, 2);
  input_.add(4, 2, 1.0F);
  output_.add(4, 2, kStale);
  route(1, 1);
  route(2, 0);
  route(0, 2);
  route(3, 3);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 1.0F, 0.0F, 0.0F));
}

TEST_F(ChannelNumberingTest, ChannelsBeyondTheDeviceAreNeverRouted) {
  input_.add(2, 2, 1.0F);
  output_.add(2, 2, kStale);
  route(2, 0);
  route(0, 2);
  route(7, 7);
  route(8, 0);
  route(0, 8);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
}

TEST_F(ChannelNumberingTest, NegativeChannelsAreNeverRouted) {
  input_.add(2, 2, 1.0F);
  output_.add(2, 2, kStale);
  route(-1, 0);
  route(0, -1);
  route(-2147483648LL, 0);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
}

TEST_F(ChannelNumberingTest, ManyMoreChannelsThanTheCountsAreClearedAndLeftAlone) {
  context_ = initialContext(1, 1);  // the table keeps 4 channels
  input_.add(3, 2, 1.0F).add(200, 2, 1.0F);
  output_.add(3, 2, kStale).add(200, 2, kStale).add(1, 2, kStale);
  route(0, 0);
  cycle();
  EXPECT_THAT(output_.channel(0, 0), Each(1.0F));
  EXPECT_THAT(output_.channel(0, 1), Each(0.0F));
  EXPECT_THAT(output_.copyOf(1), Each(0.0F));
  EXPECT_THAT(output_.copyOf(2), Each(0.0F));
}

TEST_F(ChannelNumberingTest, TheLastChannelOfALargeDeviceIsReached) {
  context_ = initialContext(1024, 1024);
  input_.add(1023, 2, 0.0F).add(1, 2, 6.0F);
  output_.add(512, 2, kStale).add(512, 2, kStale);
  route(1023, 1023);
  cycle();
  EXPECT_THAT(output_.channel(1, 511), Each(6.0F));
  EXPECT_THAT(output_.channel(1, 510), Each(0.0F));
  EXPECT_THAT(output_.channel(0, 511), Each(0.0F));
}

TEST_F(ChannelNumberingTest, TheOnlyOutputMayHaveNoData) {
  input_.add(1, 8, 1.0F);
  output_.addWithoutData(1, 28);
  route(0, 0);
  cycle();
  EXPECT_THAT(input_.copyOf(0), Each(1.0F));
}

TEST_F(ChannelNumberingTest, ChannelsWithoutDataMayBeMoreThan32BitsHold) {
  input_.add(1, 2, 1.0F).addWithoutData(0x80000000U).add(1, 2, 2.0F);
  output_.add(1, 2, kStale).addWithoutData(0xFFFFFFFFU, 8).add(1, 2, kStale);
  route(0, 0);
  route(1, 0);
  route(2, 0);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(1.0F));
  EXPECT_THAT(output_.copyOf(2), Each(0.0F));
}

using ChannelNumberingDeathTest = ChannelNumberingTest;

TEST_F(ChannelNumberingDeathTest, BufferOfMoreChannelsThan32BitsEndsTheProcess) {
  input_.add(1, 2);
  output_.add(1, 2);
  input_.buffer(0).mNumberChannels = 0x80000000U;
  EXPECT_DEATH(cycle(), "^tolvane: fatal: a buffer of the device has more channels than 32 bits hold\n$");
  input_.buffer(0).mNumberChannels = 1;
  output_.buffer(0).mNumberChannels = 0xFFFFFFFFU;
  EXPECT_DEATH(cycle(), "^tolvane: fatal: a buffer of the device has more channels than 32 bits hold\n$");
}

TEST_F(ChannelNumberingTest, LargestChannelCountOf32BitsIsCounted) {
  input_.addWithoutData(0x7FFFFFFF).addWithoutData(0x7FFFFFFF).add(1, 2, 1.0F);
  output_.add(1, 2, kStale);
  route(0, 0);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
}

}  // namespace
}  // namespace tolvane::test
