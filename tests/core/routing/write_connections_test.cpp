// Publishing a route list: which fields are written, and when the list goes live.
#include <cstring>
#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/routing/routing_context.h"

namespace tolvane::test {
namespace {

using Routes = std::vector<PatchConnection>;

/// `count` active routes with channels of their own, all with this gain.
Routes manyRoutes(std::int64_t count, float gain = 1.0F) {
  Routes routes(static_cast<std::size_t>(count));
  std::int64_t i = 0;
  for (PatchConnection& route : routes) {
    route = {i, 100 + i, gain, true};
    ++i;
  }
  return routes;
}

MATCHER_P3(IsEntry, src, dst, gain, "") {
  return arg.src == src && arg.dst == dst && arg.gain == gain;
}

class WriteConnectionsTest : public testing::Test {
 protected:
  void publish(const Routes& routes) { writeConnections(&context_, routes); }

  IOProcContext context_ = initialContext(4, 4);
};

TEST_F(WriteConnectionsTest, FirstPublicationWritesBAndMakesItLive) {
  publish({{1, 2, 0.5F, true}});
  EXPECT_EQ(context_.activeBuf, 1);
  EXPECT_EQ(context_.countB, 1);
  EXPECT_THAT(context_.patchesB[0], IsEntry(1, 2, 0.5F));
  EXPECT_EQ(context_.countA, 0);
  EXPECT_THAT(context_.patchesA, testing::Each(IsEntry(-1, -1, 1.0F)));
}

TEST_F(WriteConnectionsTest, SecondPublicationWritesAAndLeavesTheFirstBehind) {
  publish({{1, 2, 0.5F, true}});
  publish({{3, 0, 2.0F, true}, {2, 1, 1.0F, true}});
  EXPECT_EQ(context_.activeBuf, 0);
  EXPECT_EQ(context_.countA, 2);
  EXPECT_THAT(context_.patchesA[0], IsEntry(3, 0, 2.0F));
  EXPECT_THAT(context_.patchesA[1], IsEntry(2, 1, 1.0F));
  EXPECT_EQ(context_.countB, 1);
  EXPECT_THAT(context_.patchesB[0], IsEntry(1, 2, 0.5F));
}

TEST_F(WriteConnectionsTest, AlternatesBetweenZeroAndOne) {
  for (int round = 0; round < 10; ++round) {
    publish({});
    EXPECT_EQ(context_.activeBuf, round % 2 == 0 ? 1 : 0);
  }
}

TEST_F(WriteConnectionsTest, KeepsActiveRoutesInListOrder) {
  publish(
      {{5, 5, 1.0F, true}, {6, 6, 1.0F, false}, {4, 4, 1.0F, true}, {7, 7, 1.0F, false}, {5, 5, 1.0F, true}});
  ASSERT_EQ(context_.countB, 3);
  EXPECT_THAT(context_.patchesB[0], IsEntry(5, 5, 1.0F));
  EXPECT_THAT(context_.patchesB[1], IsEntry(4, 4, 1.0F));
  EXPECT_THAT(context_.patchesB[2], IsEntry(5, 5, 1.0F));
}

TEST_F(WriteConnectionsTest, KeepsTheFirst64OfSeventy) {
  publish(manyRoutes(70));
  ASSERT_EQ(context_.countB, 64);
  for (std::int32_t i = 0; i < 64; ++i) {
    EXPECT_THAT(context_.patchesB[static_cast<std::size_t>(i)], IsEntry(i, 100 + i, 1.0F));
  }
  EXPECT_THAT(context_.patchesA, testing::Each(IsEntry(-1, -1, 1.0F)));
}

TEST_F(WriteConnectionsTest, CountsOnlyActiveRoutesTowards64) {
  Routes routes = manyRoutes(164);
  for (std::size_t i = 0; i < 100; ++i) routes[i].active = false;
  publish(routes);
  ASSERT_EQ(context_.countB, 64);
  EXPECT_THAT(context_.patchesB[0], IsEntry(100, 200, 1.0F));
  EXPECT_THAT(context_.patchesB[63], IsEntry(163, 263, 1.0F));
}

TEST_F(WriteConnectionsTest, InactiveRoutesOnlySetTheCountToZeroAndFlip) {
  publish(manyRoutes(3));
  publish({{0, 0, 1.0F, false}, {1, 1, 1.0F, false}});
  EXPECT_EQ(context_.activeBuf, 0);
  EXPECT_EQ(context_.countA, 0);
}

TEST_F(WriteConnectionsTest, EmptyListSetsTheCountToZeroAndFlips) {
  publish({});
  EXPECT_EQ(context_.activeBuf, 1);
  EXPECT_EQ(context_.countB, 0);
}

TEST_F(WriteConnectionsTest, LeavesEntriesBeyondTheCountAsTheyWere) {
  publish(manyRoutes(5, 0.25F));
  publish({});
  publish({{7, 8, 2.0F, true}});
  EXPECT_EQ(context_.countB, 1);
  EXPECT_THAT(context_.patchesB[0], IsEntry(7, 8, 2.0F));
  EXPECT_THAT(context_.patchesB[1], IsEntry(1, 101, 0.25F));
  EXPECT_THAT(context_.patchesB[4], IsEntry(4, 104, 0.25F));
  EXPECT_THAT(context_.patchesB[5], IsEntry(-1, -1, 1.0F));
}

TEST_F(WriteConnectionsTest, CopiesChannelsAsTheyStand) {
  using Limits = std::numeric_limits<std::int32_t>;
  publish({{-1, 4, 1.0F, true}, {1000000, -7, 1.0F, true}, {Limits::min(), Limits::max(), 1.0F, true}});
  EXPECT_THAT(context_.patchesB[0], IsEntry(-1, 4, 1.0F));
  EXPECT_THAT(context_.patchesB[1], IsEntry(1000000, -7, 1.0F));
  EXPECT_THAT(context_.patchesB[2], IsEntry(Limits::min(), Limits::max(), 1.0F));
}

TEST_F(WriteConnectionsTest, CopiesGainsToTheBit) {
  const std::vector<float> gains = {0.0F,
                                    -0.0F,
                                    1e-45F,
                                    -3.5F,
                                    std::numeric_limits<float>::infinity(),
                                    0.1F,
                                    std::numeric_limits<float>::max(),
                                    std::numeric_limits<float>::quiet_NaN()};
  Routes routes = manyRoutes(static_cast<std::int64_t>(gains.size()));
  for (std::size_t i = 0; i < gains.size(); ++i) routes[i].gain = gains[i];
  publish(routes);
  for (std::size_t i = 0; i < gains.size(); ++i) {
    EXPECT_EQ(std::memcmp(&context_.patchesB[i].gain, &gains[i], sizeof(float)), 0) << gains[i];
  }
}

TEST_F(WriteConnectionsTest, TakesAnyOtherIndexAsB) {
  context_.activeBuf = 5;
  publish({{1, 2, 0.5F, true}});
  EXPECT_EQ(context_.countA, 1);
  EXPECT_EQ(context_.countB, 0);
  EXPECT_EQ(context_.activeBuf, 4);
}

TEST_F(WriteConnectionsTest, NeverTouchesTheChannelCounts) {
  publish(manyRoutes(64));
  publish(manyRoutes(64));
  EXPECT_EQ(context_.inputChannelCount, 4);
  EXPECT_EQ(context_.outputChannelCount, 4);
}

TEST_F(WriteConnectionsTest, IgnoresChannelsBeyond32BitsInRoutesThatAreNotPublished) {
  Routes routes = manyRoutes(66);
  routes.front() = {1LL << 40, 0, 1.0F, false};
  routes.back() = {1LL << 40, 0, 1.0F, true};
  publish(routes);
  EXPECT_EQ(context_.countB, 64);
  EXPECT_EQ(context_.activeBuf, 1);
}

using WriteConnectionsDeathTest = WriteConnectionsTest;

TEST_F(WriteConnectionsDeathTest, ChannelBeyond32BitsEndsTheProcess) {
  EXPECT_DEATH(publish({{2147483648, 0, 1.0F, true}}),
               "^tolvane: fatal: input channel of a route is beyond 32 bits\n$");
  EXPECT_DEATH(publish({{0, 2147483648, 1.0F, true}}),
               "^tolvane: fatal: output channel of a route is beyond 32 bits\n$");
  EXPECT_DEATH(publish({{-2147483649, 0, 1.0F, true}}),
               "^tolvane: fatal: input channel of a route is beyond 32 bits\n$");
  EXPECT_DEATH(publish({{0, -2147483649, 1.0F, true}}),
               "^tolvane: fatal: output channel of a route is beyond 32 bits\n$");
}

}  // namespace
}  // namespace tolvane::test
