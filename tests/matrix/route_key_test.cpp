#include "matrix/route_key.h"

#include <limits>

#include <gtest/gtest.h>

namespace tolvane {
namespace {

TEST(RouteKey, IsInputCommaOutputAndNothingElse) {
  EXPECT_EQ(routeKey(0, 1), "0,1");
  EXPECT_EQ(routeKey(12, 3), "12,3");
  EXPECT_EQ(routeKey(1023, 1023), "1023,1023");
}

TEST(RouteKey, HoldsEveryChannelARouteCanName) {
  EXPECT_EQ(routeKey(-1, 7), "-1,7");
  EXPECT_EQ(routeKey(std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()),
            "-9223372036854775808,9223372036854775807");
}

}  // namespace
}  // namespace tolvane
