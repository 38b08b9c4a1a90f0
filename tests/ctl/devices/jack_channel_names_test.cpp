// The names of channels beside what jack_lsp prints of the same graph: the devices' ports, and our own.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "ctl/support/tool_output.h"
#include "support/jack_server.h"
#include "support/jack_test_client.h"

namespace tolvane::test {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;

class ChannelNamesOnJack : public testing::Test {
 protected:
  ChannelNamesOnJack() {
    card_.addAlias(0, "Kick");
    card_.addAlias(1, "card:Snare");
    card_.activate();
  }

  static json channelsOf(const std::string& device) {
    const Finished run = runProgram({"devices", "--channels", device, "--json"});
    EXPECT_EQ(run.status, 0) << run.err;
    return json::parse(run.out).at(0);
  }

  JackServer server_;
  JackTestClient card_ = JackTestClient::card("card", 3, 2);
};

TEST_F(ChannelNamesOnJack, AreThoseOfThePatchBay) {
  const json card = channelsOf("jack:card");
  EXPECT_EQ(card.at("uid"), "jack:card");
  const auto ports = indentedLinesOf("jack_lsp -A");
  std::vector<std::string> names;
  for (const json& channel : card.at("inputs")) {
    names.push_back(channel.at("name"));
    const auto port =
        ports.find(channel.at("node").get<std::string>() + ":" + channel.at("port").get<std::string>());
    ASSERT_NE(port, ports.end()) << channel;
    if (port->second.empty()) {
      EXPECT_EQ(channel.at("name"), channel.at("port"));
    } else {
      EXPECT_THAT(port->second, testing::AnyOf(Contains(names.back()), Contains("card:" + names.back())));
    }
  }
  EXPECT_THAT(names, ElementsAre("Kick", "Snare", "capture_3"));
  EXPECT_EQ(card.at("outputs").at(1).at("name"), "playback_2");
}

TEST_F(ChannelNamesOnJack, APrettyNameIsPrintedAsItIs) {
  card_.setPrettyName(2, "Hat \033[2J ä");
  const std::string table = runProgram({"devices", "--channels", "card"}).out;
  EXPECT_THAT(table, testing::HasSubstr("card    in 3     Hat \\x1b[2J ä  card  capture_3\n")) << table;
}

TEST_F(ChannelNamesOnJack, OfWhatWeServeAreOurPortsAliases) {
  const TemporaryFolder folder;
  writePatch(folder / "p.json", {{0, 1, 1.0F, true}});
  ChildProcess child({"run", "--patch", folder / "p.json", "--device", "jack:card"});
  ASSERT_TRUE(child.waitForErr("routing on card"));
  const auto ports = indentedLinesOf("jack_lsp -A");
  ASSERT_TRUE(ports.contains("Tolvane:in_1"));
  EXPECT_THAT(ports.at("Tolvane:in_1"), ElementsAre("Kick"));
  EXPECT_THAT(ports.at("Tolvane:out_2"), ElementsAre("playback_2"));
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

}  // namespace
}  // namespace tolvane::test
