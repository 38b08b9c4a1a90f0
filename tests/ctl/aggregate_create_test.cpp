// tolvanectl aggregate create, list and delete.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ctl/aggregate_fixture.h"

namespace tolvane::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(AggregateTest, OneIsMadeListedAndDeleted) {
  const Finished made = run({"create", "Stage", "Second Card", "pipewire:first"});
  EXPECT_EQ(made.status, 0) << made.err;
  EXPECT_EQ(made.out + made.err, "");
  EXPECT_EQ(run({"list"}).out,
            "aggregate  device       inputs  outputs  there\n"
            "Stage      Second Card     1-2      1-3  yes\n"
            "Stage      First Card      3-6      4-5  yes\n");
  const json devices = json::parse(runProgram({"devices", "--json"}).out);
  const auto stage = std::find_if(devices.begin(), devices.end(),
                                  [](const json& device) { return device.at("name") == "Stage"; });
  ASSERT_NE(stage, devices.end());
  EXPECT_EQ(stage->at("driver"), "aggregate");
  EXPECT_EQ(stage->at("inputChannels"), 6);
  EXPECT_EQ(stage->at("outputChannels"), 5);

  const Finished deleted = run({"delete", "Stage"});
  EXPECT_EQ(deleted.status, 0) << deleted.err;
  EXPECT_EQ(deleted.out + deleted.err, "");
  EXPECT_EQ(run({"list"}).out, "aggregate  device  inputs  outputs  there\n");
  EXPECT_EQ(run({"list", "--json"}).out, "[]\n");
  EXPECT_THAT(runProgram({"devices"}).out, testing::Not(HasSubstr("Stage")));
  EXPECT_THAT(namesInFolder(), ElementsAre("aggregates.json"));
}

TEST_F(AggregateTest, AMemberThatIsMissingIsSaidToBe) {
  writeFile(R"({"aggregates": [{"name": "Tour", "members": [
      {"uid": "pipewire:gone", "name": "Old Box", "inputChannels": 8, "outputChannels": 8},
      {"uid": "pipewire:first", "name": "First Card", "inputChannels": 4, "outputChannels": 2}]}]})");
  const Finished listed = run({"list", "--json"});
  EXPECT_EQ(listed.status, 0);
  const json aggregates = json::parse(listed.out);
  EXPECT_EQ(aggregates[0]["members"][0]["there"], false);
  EXPECT_EQ(aggregates[0]["members"][1]["there"], true);
}

TEST_F(AggregateTest, NamesThatCannotBeAreUsageErrors) {
  for (const char* const name : {"", " ", "a\tb", "All Interfaces"}) {
    const Finished made = run({"create", name, "First Card"});
    EXPECT_EQ(made.status, 2) << name;
    EXPECT_EQ(made.out, "");
    EXPECT_THAT(made.err, testing::StartsWith("tolvanectl: "));
  }
  EXPECT_EQ(run({"create", "Stage", ""}).status, 2);
  EXPECT_FALSE(std::filesystem::exists(folder()));
}

TEST_F(AggregateTest, ANameIsTakenOnce) {
  ASSERT_EQ(run({"create", "Stage", "First Card"}).status, 0);
  const std::string before = readBytes(file());
  const Finished again = run({"create", "Stage", "Second Card"});
  EXPECT_EQ(again.status, 1);
  EXPECT_EQ(again.err, "tolvanectl: there is an aggregate called \"Stage\" already\n");
  const Finished device = run({"create", "First Card", "Second Card"});
  EXPECT_EQ(device.status, 1);
  EXPECT_EQ(device.err, "tolvanectl: there is a device called \"First Card\" already\n");
  EXPECT_EQ(readBytes(file()), before);
}

TEST_F(AggregateTest, DevicesThatCannotBeMembersAreRefused) {
  const Finished unknown = run({"create", "Stage", "First Card", "Piano"});
  EXPECT_EQ(unknown.status, 4);
  EXPECT_THAT(unknown.err, HasSubstr("no device is called \"Piano\""));
  const Finished inner = run({"create", "Stage", "All Interfaces"});
  EXPECT_EQ(inner.status, 1);
  EXPECT_THAT(inner.err, HasSubstr("All Interfaces: an aggregate cannot be in another one"));
  const Finished virtualOne = run({"create", "Stage", "Tolvane Virtual Device"});
  EXPECT_EQ(virtualOne.status, 1);
  EXPECT_THAT(virtualOne.err, HasSubstr("is not a device of PipeWire"));
  EXPECT_THAT(virtualOne.err, HasSubstr("First Card\n"));
  const Finished twice = run({"create", "Stage", "First Card", "pipewire:first"});
  EXPECT_EQ(twice.status, 1);
  EXPECT_EQ(twice.err, "tolvanectl: First Card: is named twice\n");
  EXPECT_FALSE(std::filesystem::exists(folder()));
}

TEST_F(AggregateTest, OneThatIsNotThereCannotBeDeleted) {
  const Finished deleted = run({"delete", "Stage"});
  EXPECT_EQ(deleted.status, 4);
  EXPECT_EQ(deleted.err, "tolvanectl: no aggregate is called \"Stage\"\n");
  EXPECT_EQ(run({"delete", "All Interfaces"}).status, 4);
  EXPECT_FALSE(std::filesystem::exists(folder()));
}

}  // namespace
}  // namespace tolvane::test
