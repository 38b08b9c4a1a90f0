// tolvanectl aggregate create, list and delete.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ctl/aggregate/fixture.h"

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

TEST_F(AggregateTest, NamesThatDriveATerminalOrHaveNoEndAreRefused) {
  for (const std::string& name : {std::string("a\033[2Jb"), std::string("a\nb"),
                                  std::string("a\xC2\x9B"
                                              "2Jb"),
                                  std::string("a\x9B"
                                              "2Jb"),
                                  std::string(101, 'a')}) {
    const Finished made = run({"create", name, "First Card"});
    EXPECT_EQ(made.status, 2) << testing::PrintToString(name);
    EXPECT_THAT(made.err, testing::StartsWith("tolvanectl: an aggregate's name "));
  }
  EXPECT_EQ(run({"create", std::string(100, 'a'), "First Card"}).status, 0);
}

TEST_F(AggregateTest, NamesThatDriveATerminalAreShownEscapedWhereTheyAreThereAlready) {
  writeFile(R"({"aggregates": [{"name": "a\u001b[2J\n\u009bb", "members": [
      {"uid": "pipewire:first", "name": "F\u001b[2J\n\u009bC", "inputChannels": 4, "outputChannels": 2}]}]})");
  const auto escaped = [](const std::string& text) {
    return text.find('\033') == std::string::npos && text.find("\xC2\x9B") == std::string::npos;
  };
  const Finished listed = run({"list"});
  EXPECT_EQ(listed.status, 0) << listed.err;
  EXPECT_EQ(listed.out,
            "aggregate          device             inputs  outputs  there\n"
            R"(a\x1b[2J\n\u009bb  F\x1b[2J\n\u009bC     1-4      1-2  yes)"
            "\n");
  const Finished objects = run({"list", "--json"});
  EXPECT_TRUE(escaped(objects.out)) << objects.out;
  EXPECT_EQ(json::parse(objects.out)[0].at("name"),
            "a\033[2J\n\xC2\x9B"
            "b");
  const Finished devices = runProgram({"devices"});
  EXPECT_THAT(devices.out, HasSubstr(R"(a\x1b[2J\n\u009bb)"));
  EXPECT_TRUE(escaped(devices.out)) << devices.out;
  EXPECT_TRUE(escaped(runProgram({"devices", "--json"}).out));
  const Finished taken = run({"create", "Stage",
                              "a\033[2J\n\xC2\x9B"
                              "b"});
  EXPECT_EQ(taken.status, 1);
  EXPECT_THAT(taken.err, HasSubstr(R"(a\x1b[2J\n\u009bb: an aggregate cannot be in another one)"));
  const Finished deleted = run({"delete",
                                "a\033[2J\n\xC2\x9B"
                                "b"});
  EXPECT_EQ(deleted.status, 0) << deleted.err;
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
  const Finished unknown = run({"create", "--wait", "0.1", "Stage", "First Card", "Piano"});
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
