// What a route adds to its output: gain, summation, rounding, and nothing else.
#include <cmath>
#include <cstring>
#include <limits>

#include "routing_fixture.h"

namespace tolvane::test {
namespace {

using testing::Each;
using testing::ElementsAre;

/// Two one-channel inputs, two one-channel outputs.
class MixingTest : public RoutingTest {
 protected:
  MixingTest() {
    input_.add(1, 4).add(1, 4);
    output_.add(1, 4, kStale).add(1, 4, kStale);
    set(0, {1.0F, -0.5F, 0.25F, 3.0F});
    set(1, {10.0F, 20.0F, 30.0F, 40.0F});
  }

  void set(std::size_t stream, const std::vector<float>& samples) {
    std::copy(samples.begin(), samples.end(), input_.samples(stream).begin());
  }
};

TEST_F(MixingTest, UnitGainCopiesExactly) {
  route(0, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(1), ElementsAre(1.0F, -0.5F, 0.25F, 3.0F));
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
}

TEST_F(MixingTest, InactiveRoutesAloneSilenceTheNextCycle) {
  route(0, 0);
  route(1, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(1.0F, -0.5F, 0.25F, 3.0F));
  EXPECT_THAT(output_.copyOf(1), ElementsAre(10.0F, 20.0F, 30.0F, 40.0F));
  for (PatchConnection& route : routes_) route.active = false;
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
  EXPECT_THAT(output_.copyOf(1), Each(0.0F));
}

TEST_F(MixingTest, HalfGainHalves) {
  route(0, 0, 0.5F);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(0.5F, -0.25F, 0.125F, 1.5F));
}

TEST_F(MixingTest, NegativeGainInverts) {
  route(1, 0, -1.0F);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(-10.0F, -20.0F, -30.0F, -40.0F));
}

TEST_F(MixingTest, ZeroGainIsSilentButRouted) {
  route(1, 0, 0.0F);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
}

TEST_F(MixingTest, RoutesIntoOneOutputAreSummed) {
  route(0, 0, 0.5F);
  route(1, 0);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(10.5F, 19.75F, 30.125F, 41.5F));
}

TEST_F(MixingTest, TheSameRouteTwiceCountsTwice) {
  route(0, 0);
  route(0, 0);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(2.0F, -1.0F, 0.5F, 6.0F));
}

TEST_F(MixingTest, OneInputFeedsManyOutputs) {
  route(1, 0, 2.0F);
  route(1, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(20.0F, 40.0F, 60.0F, 80.0F));
  EXPECT_THAT(output_.copyOf(1), ElementsAre(10.0F, 20.0F, 30.0F, 40.0F));
}

TEST_F(MixingTest, InputsAreLeftAsTheyAre) {
  route(0, 0, 0.5F);
  route(1, 0, 0.5F);
  cycle();
  EXPECT_THAT(input_.copyOf(0), ElementsAre(1.0F, -0.5F, 0.25F, 3.0F));
  EXPECT_THAT(input_.copyOf(1), ElementsAre(10.0F, 20.0F, 30.0F, 40.0F));
}

TEST_F(MixingTest, NothingIsClipped) {
  set(0, {1e30F, -1e30F, 3.0e38F, 2.0F});
  route(0, 0, 4.0F);
  route(0, 1);
  route(0, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(4e30F, -4e30F, HUGE_VALF, 8.0F));
  EXPECT_THAT(output_.copyOf(1), ElementsAre(2e30F, -2e30F, HUGE_VALF, 4.0F));
}

TEST_F(MixingTest, NonFiniteValuesGoThrough) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  set(0, {nan, HUGE_VALF, -HUGE_VALF, 1.0F});
  route(0, 0);
  route(0, 1, 0.0F);
  cycle();
  EXPECT_TRUE(std::isnan(output_.samples(0)[0]));
  EXPECT_EQ(output_.samples(0)[1], HUGE_VALF);
  EXPECT_EQ(output_.samples(0)[2], -HUGE_VALF);
  EXPECT_TRUE(std::isnan(output_.samples(1)[1])) << "zero times infinity";
  EXPECT_EQ(output_.samples(1)[3], 0.0F);
}

TEST_F(MixingTest, SubnormalsAreKept) {
  set(0, {1e-45F, -1e-45F, 1e-40F, 0.0F});
  route(0, 0);
  route(0, 1, 0.5F);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(1e-45F, -1e-45F, 1e-40F, 0.0F));
  EXPECT_EQ(output_.samples(1)[2], 5e-41F);
}

TEST_F(MixingTest, ProductIsRoundedBeforeTheSum) {
  // x * x is 1 + 2^-11 + 2^-24, rounded to 1 + 2^-11: a fused multiply-add would leave the 2^-24.
  const float x = 1.0F + 0x1p-12F;
  set(0, {x, x, x, x});
  set(1, {1.0F + 0x1p-11F, 1.0F + 0x1p-11F, 1.0F + 0x1p-11F, 1.0F + 0x1p-11F});
  route(1, 0, -1.0F);
  route(0, 0, x);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
}

TEST_F(MixingTest, RoutesAreAddedInOrder) {
  set(0, {1e8F, 1e8F, 1e8F, 1e8F});
  set(1, {1.0F, 1.0F, 1.0F, 1.0F});
  route(0, 0);
  route(1, 0);
  route(0, 0, -1.0F);
  route(0, 1);
  route(0, 1, -1.0F);
  route(1, 1);
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F)) << "1 is lost beside 1e8";
  EXPECT_THAT(output_.copyOf(1), Each(1.0F)) << "1 comes after 1e8 has gone";
}

TEST_F(MixingTest, OutputStartsFromPositiveZero) {
  set(0, {-0.0F, -0.0F, -0.0F, -0.0F});
  route(0, 0);
  route(0, 1, 0.5F);
  cycle();
  for (const std::size_t stream : {0U, 1U}) {
    for (const float sample : output_.samples(stream)) EXPECT_FALSE(std::signbit(sample));
  }
}

TEST_F(MixingTest, EveryCycleStartsFromSilence) {
  route(0, 0);
  cycle();
  cycle();
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(1.0F, -0.5F, 0.25F, 3.0F));
}

TEST_F(MixingTest, ReadsTheLiveBufferOnly) {
  publish({{0, 0, 1.0F, true}});
  publish({{1, 1, 1.0F, true}});
  routeCycle(input_.get(), output_.get(), &context_);
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
  EXPECT_THAT(output_.copyOf(1), ElementsAre(10.0F, 20.0F, 30.0F, 40.0F));
}

TEST_F(MixingTest, TakesAnyIndexOtherThanZeroAsB) {
  publish({{0, 0, 1.0F, true}});
  context_.activeBuf = -3;
  routeCycle(input_.get(), output_.get(), &context_);
  EXPECT_THAT(output_.copyOf(0), ElementsAre(1.0F, -0.5F, 0.25F, 3.0F));
}

TEST_F(MixingTest, SixtyFourRoutesAllSound) {
  for (int i = 0; i < 64; ++i) route(1, 0, 0.5F);
  cycle();
  EXPECT_THAT(output_.copyOf(0), ElementsAre(320.0F, 640.0F, 960.0F, 1280.0F));
}

}  // namespace
}  // namespace tolvane::test
