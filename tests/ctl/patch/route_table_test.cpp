// The table of routes, with and without the names of their channels.
#include "ctl/patch/route_table.h"

#include <vector>

#include <gtest/gtest.h>

namespace tolvane::ctl {
namespace {

const std::vector<PatchConnection> kRoutes = {{2, 4, 0.5F, true}, {0, -1, 1.0F, false}};

RouteNames named(const std::string& third, const std::string& fifth) {
  return {[=](std::int64_t channel) { return channel == 2 ? third : std::string(); },
          [=](std::int64_t channel) { return channel == 4 ? fifth : std::string(); }};
}

TEST(RouteTable, HasNumbersAloneWhereNoChannelHasAName) {
  const std::string plain =
      "input  output  gain    dB  active\n"
      "    3       5   0.5  -6.0  yes\n"
      "    1       0   1.0   0.0  no\n";
  EXPECT_EQ(routeTable(kRoutes), plain);
  EXPECT_EQ(routeTable(kRoutes, named("", "")), plain);
  EXPECT_EQ(routeTable({}, named("a", "b")), "no routes\n");
}

TEST(RouteTable, HasTheNamesOfTheChannelsThatHaveOne) {
  EXPECT_EQ(routeTable(kRoutes, named("capture_AUX2", "playback_FL")),
            "input  output  gain    dB  active  input name    output name\n"
            "    3       5   0.5  -6.0  yes     capture_AUX2  playback_FL\n"
            "    1       0   1.0   0.0  no      -             -\n");
  EXPECT_EQ(routeTable(kRoutes, named("", "a\nb\033")),
            "input  output  gain    dB  active  input name  output name\n"
            "    3       5   0.5  -6.0  yes     -           a\\nb\\x1b\n"
            "    1       0   1.0   0.0  no      -           -\n");
}

}  // namespace
}  // namespace tolvane::ctl
