// The names of the devices' channels: pretty names, aliases, or the ports' own; and those of our ports.
#include <array>
#include <cstdio>
#include <map>

#include <gmock/gmock.h>

#include "hal/counting_observer.h"
#include "hal/jack/jack_channels.h"
#include "hal/jack/jack_fixture.h"

namespace tolvane::test {
namespace {

using hal::ChannelInfo;
using hal::jackChannel;
using ::testing::ElementsAre;

TEST(JackChannel, IsCalledLikeItsPort) {
  EXPECT_EQ(jackChannel("system:capture_1", "", {}), (ChannelInfo{"capture_1", "system", "capture_1"}));
  EXPECT_EQ(jackChannel("card:port:1", "", {"", ""}), (ChannelInfo{"port:1", "card", "port:1"}));
  EXPECT_EQ(jackChannel("nameless", "", {}), (ChannelInfo{"nameless", "nameless", "nameless"}));
}

TEST(JackChannel, IsCalledAsItsUserSays) {
  EXPECT_EQ(jackChannel("system:capture_1", "", {"Kick"}).name, "Kick");
  EXPECT_EQ(jackChannel("system:capture_1", "", {"system:Kick"}).name, "Kick");
  EXPECT_EQ(jackChannel("system:capture_1", "", {"stage:Kick"}).name, "stage:Kick");
  EXPECT_EQ(jackChannel("system:capture_1", "", {"", "Kick"}).name, "Kick");
  EXPECT_EQ(jackChannel("system:capture_1", "Kick Drum", {"Kick"}),
            (ChannelInfo{"Kick Drum", "system", "capture_1"}));
}

TEST(JackChannel, IsNotCalledAsTheServersDriverNumbersIt) {
  EXPECT_EQ(jackChannel("system:capture_1", "", {"alsa_pcm:hw:PCH:out1"}).name, "capture_1");
  EXPECT_EQ(jackChannel("system:capture_1", "", {"alsa_pcm:hw:PCH:out1", "Kick"}).name, "Kick");
  for (const char* alias : {"dummy_pcm:dummy:out1", "net_pcm::out1", "proxy_pcm:in12", "iio_pcm:iio:out1"})
    EXPECT_EQ(jackChannel("system:capture_1", "", {alias, "Kick"}).name, "Kick") << alias;
  // Its driver for FireWire cards has the channel's name in the port's, and numbers it in the alias.
  EXPECT_EQ(jackChannel("firewire_pcm:Mic 1_in", "", {"system:capture_1"}).name, "Mic 1_in");
  EXPECT_EQ(jackChannel("firewire_pcm:Line 1_out", "", {"system:playback_12", "Wedge"}).name, "Wedge");
  for (const char* alias : {"my_pcm:Kick", "_pcm:in", "pcm:out1", "system:capture_", "system:capture_1a"})
    EXPECT_EQ(jackChannel("card:capture_1", "", {alias}).name, alias);
}

/// The server's ports with their aliases, as jack_lsp -A prints them.
std::map<std::string, std::vector<std::string>> listedPorts() {
  std::map<std::string, std::vector<std::string>> ports;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(::popen("jack_lsp -A", "r"), &::pclose);
  std::array<char, 1024> line{};
  std::string port;
  while (std::fgets(line.data(), line.size(), output.get()) != nullptr) {
    std::string text = line.data();
    text.erase(text.find_last_not_of('\n') + 1);
    const std::size_t begin = text.find_first_not_of(" \t");
    if (begin == 0) port = text;
    if (begin == 0) ports[port];
    if (begin != 0 && begin != std::string::npos) ports[port].push_back(text.substr(begin));
  }
  return ports;
}

class JackChannelNames : public JackFixture {
 protected:
  static std::vector<std::string> namesOf(const std::vector<ChannelInfo>& channels) {
    std::vector<std::string> names;
    for (const ChannelInfo& channel : channels) names.push_back(channel.name);
    return names;
  }

  /// Waits until the card's inputs have these names.
  bool isCalled(const std::vector<std::string>& names) {
    return eventually([&] { return namesOf(device("card").inputs) == names; });
  }
};

TEST_F(JackChannelNames, AreThoseThatTheServerLists) {
  startServer();
  JackTestClient card = JackTestClient::card("card", 3, 1);
  card.addAlias(1, "Snare");
  card.addAlias(2, "alsa_pcm:hw:Rack:out3");
  card.addAlias(2, "card:Hat");
  EXPECT_TRUE(isCalled({"capture_1", "Snare", "Hat"}));
  const auto ports = listedPorts();
  const hal::DeviceInfo listed = device("card");
  for (const ChannelInfo& channel : listed.inputs) {
    const auto port = ports.find(channel.node + ":" + channel.port);
    ASSERT_NE(port, ports.end()) << channel.port;
    if (channel.name == "Hat") {
      EXPECT_EQ(port->second.back(), "card:Hat");
    } else if (channel.name == "Snare") {
      EXPECT_THAT(port->second, ElementsAre("Snare"));
    }
  }
  EXPECT_THAT(namesOf(listed.outputs), ElementsAre("playback_1"));
}

TEST_F(JackChannelNames, APrettyNameComesFirstAndItsChangeIsTold) {
  startServer();
  JackTestClient card = JackTestClient::card("card", 2, 1);
  card.addAlias(0, "Kick");
  CountingObserver observer;
  driver_->setObserver(observer);
  ASSERT_TRUE(isCalled({"Kick", "capture_2"}));
  const int told = observer.told();
  card.setPrettyName(0, "Kick Drum");
  EXPECT_TRUE(eventually([&] { return observer.told() > told; }));
  EXPECT_TRUE(isCalled({"Kick Drum", "capture_2"}));
  driver_.reset();  // before the observer
}

TEST_F(JackChannelNames, HostileOnesComeAsTheyAre) {
  startServer();
  JackTestClient card = JackTestClient::card("card", 2, 1);
  const std::string longName(319, 'x');  // the most that the server keeps whole
  card.addAlias(0, "a\033[2J\nb\x9B");
  card.addAlias(1, longName);
  EXPECT_TRUE(isCalled({"a\033[2J\nb\x9B", longName}));
}

TEST_F(JackChannelNames, OurPortsHaveThemAsAliases) {
  startServer();
  JackTestClient card = JackTestClient::card("card", 4, 1);
  card.addAlias(0, "Kick");
  card.addAlias(1, "other:card");
  card.addAlias(2, std::string(318, 'x') + "\xC3\xA4");  // ends within the last character's bytes
  card.activate();
  JackSessionClient session(4, 1, {});
  const auto running = start("card", session);
  ASSERT_NE(running, nullptr);
  auto ports = listedPorts();
  EXPECT_THAT(ports["Tolvane:in_1"], ElementsAre("Kick"));
  // With a colon, the server could take it for another port's name.
  EXPECT_THAT(ports["Tolvane:in_2"], ElementsAre("other_card"));
  EXPECT_THAT(ports["Tolvane:in_4"], ElementsAre("capture_4"));
  EXPECT_THAT(ports["Tolvane:out_1"], ElementsAre("playback_1"));
  ASSERT_EQ(ports["Tolvane:in_3"].size(), 1U);
  EXPECT_LT(ports["Tolvane:in_3"].front().size(), 320U);
}

}  // namespace
}  // namespace tolvane::test
