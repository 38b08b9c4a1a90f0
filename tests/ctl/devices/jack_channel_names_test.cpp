// The names of channels beside what jack_lsp prints of the same graph: the devices' ports, and our own.
#include <csignal>
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "ctl/support/tool_output.h"
#include "support/eventually.h"
#include "support/jack_server.h"
#include "support/jack_test_client.h"

namespace tolvane::test {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;

constexpr const char* kPrettyName = "http://jackaudio.org/metadata/pretty-name";

/// The card's channels are named by JACK's own programs, as a user does it.
class ChannelNamesOnJack : public testing::Test {
 protected:
  ChannelNamesOnJack() {
    card_.activate();
    name("jack_alias card:capture_1 Kick");
    name("jack_alias card:capture_2 card:Snare");
    name("jack_alias card:playback_2 Wedge");
    name("jack_property -p -s card:playback_1 " + std::string(kPrettyName) + " 'Front of House'");
    name("jack_alias system:capture_2 Talkback");
  }

  static void name(const std::string& command) { EXPECT_EQ(runShell(command), 0) << command; }

  static json channelsOf(const std::string& device) {
    const Finished run = runProgram({"devices", "--channels", device, "--json"});
    EXPECT_EQ(run.status, 0) << run.err;
    return json::parse(run.out).at(0);
  }

  static std::vector<std::string> namesOf(const json& channels) {
    std::vector<std::string> names;
    for (const json& channel : channels) names.push_back(channel.at("name"));
    return names;
  }

  static std::string portOf(const json& channel) {
    return channel.at("node").get<std::string>() + ":" + channel.at("port").get<std::string>();
  }

  /// The ports of a client with these properties, in jack_lsp's order and writing.
  static std::vector<std::string> portsListed(const std::string& client, const std::string& properties) {
    std::vector<std::string> ports;
    std::string port;
    for (const std::string& line : linesOf("jack_lsp -p " + client + ":")) {
      if (line.find("properties: " + properties) != std::string::npos) ports.push_back(port);
      port = line;
    }
    return ports;
  }

  /// What JACK's programs print for the port: its pretty name, or its aliases and the port's own name, each
  /// with and without the client.
  static std::vector<std::string> namesListed(const std::string& port) {
    std::vector<std::string> names =
        linesOf("jack_property -p -l " + port + " " + kPrettyName + " 2>/dev/null");
    if (!names.empty()) return names;
    const std::string client = port.substr(0, port.find(':') + 1);
    names = indentedLinesOf("jack_lsp -A").at(port);
    names.push_back(port);
    for (std::string& name : names) {
      if (name.starts_with(client)) name.erase(0, client.size());
    }
    return names;
  }

  static void expectCalledAsListed(const json& channels, const std::vector<std::string>& listed) {
    ASSERT_EQ(channels.size(), listed.size());
    for (std::size_t c = 0; c < listed.size(); ++c) {
      EXPECT_EQ(portOf(channels[c]), listed[c]);
      EXPECT_THAT(namesListed(listed[c]), Contains(channels[c].at("name").get<std::string>())) << listed[c];
    }
  }

  JackServer server_;
  JackTestClient card_ = JackTestClient::card("card", 3, 2);
};

TEST_F(ChannelNamesOnJack, AreThoseOfThePatchBayPortByPort) {
  const json card = channelsOf("jack:card");
  EXPECT_EQ(card.at("uid"), "jack:card");
  expectCalledAsListed(card.at("inputs"), portsListed("card", "output,physical"));
  expectCalledAsListed(card.at("outputs"), portsListed("card", "input,physical"));
  EXPECT_THAT(namesOf(card.at("inputs")), ElementsAre("Kick", "Snare", "capture_3"));
  EXPECT_THAT(namesOf(card.at("outputs")), ElementsAre("Front of House", "Wedge"));
}

TEST_F(ChannelNamesOnJack, OfTheServersOwnPortsAreNotWhatItsDriverNumbers) {
  const json system = channelsOf("jack:system");
  expectCalledAsListed(system.at("inputs"), portsListed("system", "output,physical"));
  expectCalledAsListed(system.at("outputs"), portsListed("system", "input,physical"));
  EXPECT_THAT(indentedLinesOf("jack_lsp -A").at("system:capture_2"),
              ElementsAre("dummy_pcm:dummy:out2", "Talkback"));
  EXPECT_THAT(namesOf(system.at("inputs")), ElementsAre("capture_1", "Talkback"));
  EXPECT_THAT(namesOf(system.at("outputs")), ElementsAre("playback_1", "playback_2"));
}

TEST_F(ChannelNamesOnJack, APrettyNameIsPrintedAsItIs) {
  card_.setPrettyName(2, "Hat \033[2J ä");
  const std::string table = runProgram({"devices", "--channels", "card"}).out;
  EXPECT_THAT(table, testing::HasSubstr("card    in 3     Hat \\x1b[2J ä   card  capture_3\n")) << table;
}

TEST_F(ChannelNamesOnJack, OfWhatWeServeAreOurPortsAliases) {
  const TemporaryFolder folder;
  writePatch(folder / "p.json", {{0, 1, 1.0F, true}});
  ChildProcess child({"run", "--patch", folder / "p.json", "--device", "jack:card"});
  ASSERT_TRUE(child.waitForErr("routing on card"));
  const auto ports = indentedLinesOf("jack_lsp -A");
  ASSERT_TRUE(ports.contains("Tolvane:in_1"));
  EXPECT_THAT(ports.at("Tolvane:in_1"), ElementsAre("Kick"));
  EXPECT_THAT(ports.at("Tolvane:out_1"), ElementsAre("Front of House"));
  EXPECT_THAT(ports.at("Tolvane:out_2"), ElementsAre("Wedge"));
  // The server lists a connection only after its next cycle.
  std::map<std::string, std::vector<std::string>> connections;
  eventually([&] {
    connections = indentedLinesOf("jack_lsp -c");
    return !connections.at("Tolvane:out_2").empty();
  });
  const json card = channelsOf("jack:card");
  for (std::size_t c = 0; c < card.at("inputs").size(); ++c) {
    EXPECT_THAT(connections.at("Tolvane:in_" + std::to_string(c + 1)),
                ElementsAre(portOf(card.at("inputs")[c])));
  }
  for (std::size_t c = 0; c < card.at("outputs").size(); ++c) {
    EXPECT_THAT(connections.at("Tolvane:out_" + std::to_string(c + 1)),
                ElementsAre(portOf(card.at("outputs")[c])));
  }
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

}  // namespace
}  // namespace tolvane::test
