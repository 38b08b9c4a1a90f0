// The aggregates file keeps its content, whatever goes wrong.
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ctl/aggregate/fixture.h"

namespace tolvane::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(AggregateTest, ABadFileIsAnErrorOfEveryCommandAndIsLeftAlone) {
  const std::string bad = "{\"aggregates\": [\n  {\"name\": 5}\n]}";
  writeFile(bad);
  const std::vector<std::vector<std::string>> commands{
      {"list"}, {"list", "--json"}, {"create", "Stage", "First Card"}, {"delete", "Stage"}};
  for (const auto& command : commands) {
    const Finished finished = run(command);
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.out, "");
    EXPECT_EQ(finished.err, "tolvanectl: " + file() +
                                ": line 2, column 12: /aggregates/0/name: expected a string, found number\n");
    EXPECT_EQ(readBytes(file()), bad);
  }
  const Finished devices = runProgram({"devices"});
  EXPECT_EQ(devices.status, 0);
  EXPECT_THAT(devices.out, HasSubstr("All Interfaces"));
}

TEST_F(AggregateTest, WhatTheFileHasBesidesIsKept) {
  writeFile(R"({"aggregates": [], "comment": "mine"})");
  ASSERT_EQ(run({"create", "Stage", "First Card"}).status, 0);
  ASSERT_EQ(run({"create", "Home", "Second Card"}).status, 0);
  ASSERT_EQ(run({"delete", "Stage"}).status, 0);
  const json document = json::parse(readBytes(file()));
  EXPECT_EQ(document.at("comment"), "mine");
  ASSERT_EQ(document.at("aggregates").size(), 1U);
  EXPECT_EQ(document.at("aggregates")[0].at("name"), "Home");
}

TEST_F(AggregateTest, AFullDiskLeavesTheOldFileAndNothingElse) {
  ASSERT_EQ(run({"create", "Stage", "First Card"}).status, 0);
  const std::string before = readBytes(file());
  ChildProcess::Options options;
  options.limits = {{RLIMIT_FSIZE, 300}};  // like a full disk: writing beyond it fails
  const Finished made = runProgram({"aggregate", "create", "Home", "First Card", "Second Card"}, options);
  EXPECT_EQ(made.status, 1);
  EXPECT_THAT(made.err, StartsWith("tolvanectl: " + file() + ": "));
  EXPECT_EQ(readBytes(file()), before);
  EXPECT_THAT(namesInFolder(), ElementsAre("aggregates.json"));
}

TEST_F(AggregateTest, AFolderThatCannotBeMadeIsSaidToBe) {
  writeText(server_.configFolder(), "a file in the place of the folder");
  const Finished made = run({"create", "Stage", "First Card"});
  EXPECT_EQ(made.status, 1);
  EXPECT_EQ(made.err, "tolvanectl: " + folder() + ": Not a directory\n");
}

TEST_F(AggregateTest, WithoutAnyPlaceForItThereIsNone) {
  ChildProcess::Options options;
  options.environment = {{"XDG_CONFIG_HOME", ""}, {"HOME", ""}};
  const Finished listed = runProgram({"aggregate", "list"}, options);
  EXPECT_EQ(listed.status, 1);
  EXPECT_EQ(listed.err, "tolvanectl: neither XDG_CONFIG_HOME nor HOME says where aggregates are kept\n");
}

TEST_F(AggregateTest, ALinkToTheFileStaysOne) {
  writeFile(R"({"aggregates": []})");
  const std::string real = server_.configFolder() + "/real.json";
  std::filesystem::rename(file(), real);
  std::filesystem::create_symlink(real, file());
  ASSERT_EQ(run({"create", "Stage", "First Card"}).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(file()));
  EXPECT_THAT(readBytes(real), HasSubstr("Stage"));
}

TEST_F(AggregateTest, ALinkToNothingStaysOneAndTheFileIsMadeWhereItLeads) {
  const std::string real = server_.configFolder() + "/real.json";
  std::filesystem::create_directories(folder());
  std::filesystem::create_symlink("../real.json", file());
  ASSERT_EQ(run({"create", "Stage", "First Card"}).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(file()));
  EXPECT_THAT(readBytes(real), HasSubstr("Stage"));
  EXPECT_THAT(namesInFolder(), ElementsAre("aggregates.json"));
}

TEST_F(AggregateTest, ManyAtATimeAreAllKept) {
  constexpr int kMakers = 6;
  std::vector<std::thread> makers;
  for (int maker = 0; maker < kMakers; ++maker) {
    makers.emplace_back([maker] {
      EXPECT_EQ(run({"create", "Aggregate " + std::to_string(maker), "First Card"}).status, 0);
    });
  }
  for (std::thread& maker : makers) maker.join();
  EXPECT_EQ(json::parse(readBytes(file())).at("aggregates").size(), std::size_t{kMakers});
}

}  // namespace
}  // namespace tolvane::test
