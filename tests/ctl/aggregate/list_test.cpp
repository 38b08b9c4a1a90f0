// The list of named aggregates, as a table and as JSON.
#include "ctl/aggregate/list.h"

#include <gtest/gtest.h>

namespace tolvane::ctl {
namespace {

const std::vector<hal::Aggregate> kAggregates{
    {"Stage",
     {{"pipewire:usb", "USB Box", 18, 20}, {"pipewire:mic", "Mic", 1, 0}, {"pipewire:pci", "Rack", 2, 8}}},
    {"Home", {{"pipewire:pci", "Rack", 2, 8}}}};

TEST(AggregateList, TheTableHasTheChannelsOfEachMemberInTheAggregate) {
  EXPECT_EQ(aggregateTable(kAggregates, {"pipewire:pci"}),
            "aggregate  device   inputs  outputs  there\n"
            "Stage      USB Box    1-18     1-20  no\n"
            "Stage      Mic          19        -  no\n"
            "Stage      Rack      20-21    21-28  yes\n"
            "Home       Rack        1-2      1-8  yes\n");
}

TEST(AggregateList, TheJsonHasEveryMember) {
  EXPECT_EQ(aggregateJson({kAggregates[1]}, {"pipewire:pci"}), R"([
  {
    "name": "Home",
    "members": [
      {
        "uid": "pipewire:pci",
        "name": "Rack",
        "inputChannels": 2,
        "outputChannels": 8,
        "there": true
      }
    ]
  }
]
)");
  EXPECT_EQ(aggregateJson({}, {}), "[]\n");
}

}  // namespace
}  // namespace tolvane::ctl
