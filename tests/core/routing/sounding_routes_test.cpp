// Which routes of a list sound.
#include "core/routing/sounding_routes.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tolvane::test {
namespace {

using testing::ElementsAre;

std::vector<const PatchConnection*> pointers(const SoundingRoutes& routes) {
  return {routes.begin(), routes.end()};
}

TEST(SoundingRoutes, AreTheActiveOnesInOrder) {
  const std::vector<PatchConnection> routes = {
      {3, 0, 1.0F, true}, {2, 1, 1.0F, false}, {1, 2, 1.0F, true}, {3, 0, 1.0F, true}};
  EXPECT_THAT(pointers(soundingRoutes(routes)), ElementsAre(&routes[0], &routes[2], &routes[3]));
}

TEST(SoundingRoutes, AreAtMost64) {
  std::vector<PatchConnection> routes(70);
  routes[5].active = false;
  const SoundingRoutes sounding = soundingRoutes(routes);
  EXPECT_EQ(sounding.size(), 64U);
  EXPECT_EQ(sounding.end()[-1], &routes[64]);
}

TEST(SoundingRoutes, OfAnEmptyListAreNone) {
  EXPECT_EQ(soundingRoutes({}).size(), 0U);
}

}  // namespace
}  // namespace tolvane::test
