// Which devices are made from the machine's cards, and what is remembered of them.
#include "hal/alsa/shown_cards.h"

#include <map>

#include <gtest/gtest.h>

namespace tolvane::hal::alsa {
namespace {

using Outcome = Probe::Outcome;

DuplexOffer offer(unsigned inputs, unsigned outputs) {
  return {{48000, inputs, outputs, 256, 32, 4096, 3, 2, 16}, {44100, 48000}};
}

class ShownCardsTest : public testing::Test {
 protected:
  std::vector<DeviceInfo> show(const std::vector<Card>& cards, const std::set<int>& held = {},
                               const std::set<std::string>& running = {}) {
    return shown_.show(cards, {held, running, claimed_});
  }
  static Card card(int index, const char* id, const char* name) { return {index, id, name, 0, 0}; }

  std::map<std::string, Probe> probes_;  // result of the next probe, by the card's id
  std::vector<std::string> looks_;
  std::set<std::string> claimed_;
  CardSettings asked_;
  ShownCards shown_{[this](const Card& looked, const CardSettings& settings) {
    looks_.push_back(looked.id);
    asked_ = settings;
    return probes_[looked.id];
  }};
};

TEST_F(ShownCardsTest, ACardIsADevice) {
  probes_["PCH"] = {Outcome::known, offer(2, 4)};
  const auto devices = show({card(0, "PCH", "HDA Intel PCH")});
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].uid, "alsa:PCH");
  EXPECT_EQ(devices[0].name, "HDA Intel PCH");
  EXPECT_EQ(devices[0].transportType, UInt32{kAudioDeviceTransportTypeAlsa});
  EXPECT_EQ(devices[0].inputStreams, (StreamLayout{1, 1}));
  EXPECT_EQ(devices[0].outputStreams, (StreamLayout{1, 1, 1, 1}));
  EXPECT_EQ(devices[0].sampleRateHz, 48000.0);
  EXPECT_EQ(devices[0].bufferFrames, 256U);
  EXPECT_EQ(devices[0].minBufferFrames, 32U);
  EXPECT_EQ(devices[0].maxBufferFrames, 4096U);
  EXPECT_EQ(devices[0].sampleRatesHz, (std::vector<double>{44100.0, 48000.0}));
  EXPECT_EQ(devices[0].periods, 3U);
  EXPECT_EQ(devices[0].minPeriods, 2U);
  EXPECT_EQ(devices[0].maxPeriods, 16U);
}

TEST_F(ShownCardsTest, ItsChannelsAreCalledAsItsDriverCallsThem) {
  probes_["PCH"] = {Outcome::known, offer(2, 2), {}, {"FL", "FR"}};
  for (int time = 0; time < 2; ++time) {
    const auto devices = show({card(0, "PCH", "HDA Intel PCH")});
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_TRUE(devices[0].inputs.empty());
    EXPECT_EQ(devices[0].outputs, (std::vector<ChannelInfo>{{.name = "FL"}, {.name = "FR"}}));
  }
}

TEST_F(ShownCardsTest, ACardIsLookedAtOnce) {
  probes_["PCH"] = {Outcome::known, offer(2, 2)};
  const auto first = show({card(0, "PCH", "Card")});
  probes_["PCH"] = {Outcome::useless, {}};
  EXPECT_EQ(show({card(0, "PCH", "Card")}), first);
  EXPECT_EQ(looks_, std::vector<std::string>{"PCH"});
}

TEST_F(ShownCardsTest, ACardThatWasAwayIsLookedAtAgain) {
  probes_["USB"] = {Outcome::known, offer(2, 2)};
  show({card(1, "USB", "Card")});
  EXPECT_TRUE(show({}).empty());
  probes_["USB"] = {Outcome::known, offer(8, 8)};
  EXPECT_EQ(show({card(3, "USB", "Card")}).at(0).inputStreams.size(), 8U);
}

TEST_F(ShownCardsTest, ABusyCardKeepsWhatWasKnown) {
  probes_["USB"] = {Outcome::known, offer(18, 20)};
  const auto before = show({card(1, "USB", "Card")});
  shown_.lookAgain("alsa:USB");
  probes_["USB"] = {Outcome::notNow, offer(2, 0)};
  EXPECT_EQ(show({card(1, "USB", "Card")}), before);
  EXPECT_EQ(looks_.size(), 2U);
}

TEST_F(ShownCardsTest, ACardBusyFromTheFirstOnIsShownAsItIsUsedUntilMoreIsKnown) {
  probes_["USB"] = {Outcome::notNow, {{44100, 0, 2, 441, 0, 0, 0, 0, 0}, {}}};
  const auto busy = show({card(1, "USB", "Card")});
  ASSERT_EQ(busy.size(), 1U);
  EXPECT_EQ(busy[0].outputStreams.size(), 2U);
  EXPECT_EQ(busy[0].maxBufferFrames, 0U);
  EXPECT_TRUE(busy[0].sampleRatesHz.empty());
  probes_["USB"] = {Outcome::known, offer(18, 20)};
  EXPECT_EQ(show({card(1, "USB", "Card")}).at(0).outputStreams.size(), 20U);
}

TEST_F(ShownCardsTest, ACardWithNothingForUsIsNotShown) {
  probes_["Odd"] = {Outcome::useless, {}};
  probes_["Used"] = {Outcome::notNow, {}};
  EXPECT_TRUE(show({card(0, "Odd", "Odd"), card(1, "Used", "Used")}).empty());
}

TEST_F(ShownCardsTest, ACardOfASoundServerIsTheServers) {
  probes_["PCH"] = {Outcome::known, offer(2, 2)};
  probes_["USB"] = {Outcome::known, offer(2, 2)};
  const std::vector<Card> cards{card(0, "PCH", "A"), card(1, "USB", "B")};
  const auto devices = show(cards, {0});
  ASSERT_EQ(devices.size(), 2U);
  EXPECT_TRUE(devices[0].isHeld);
  EXPECT_EQ(devices[0].uid, "alsa:PCH");
  EXPECT_EQ(devices[0].name, "A");
  EXPECT_EQ(devices[0].alsaCards, std::vector{0});
  EXPECT_FALSE(devices[1].isHeld);
  EXPECT_EQ(looks_, std::vector<std::string>{"USB"});
  for (const DeviceInfo& device : show(cards)) EXPECT_FALSE(device.isHeld) << device.uid;
}

TEST_F(ShownCardsTest, AClaimedCardIsOursWhoeverHasIt) {
  probes_["PCH"] = {Outcome::known, offer(2, 4)};
  claimed_ = {"alsa:PCH"};
  const auto devices = show({card(0, "PCH", "A")}, {0});
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_FALSE(devices[0].isHeld);
  EXPECT_EQ(devices[0].outputStreams.size(), 4U);
  EXPECT_TRUE(devices[0].alsaCards.empty());  // it stays listed even if the server lists it, too
}

TEST_F(ShownCardsTest, AClaimedCardIsShownOnceItIsFree) {
  claimed_ = {"alsa:USB"};
  probes_["USB"] = {Outcome::notNow, {{44100, 0, 2, 441, 0, 0, 0, 0, 0}, {}}};
  for (int list = 0; list < 2; ++list) EXPECT_TRUE(show({card(1, "USB", "Card")}).empty());
  probes_["USB"] = {Outcome::known, offer(18, 20)};
  EXPECT_EQ(show({card(1, "USB", "Card")}).at(0).outputStreams.size(), 20U);
}

TEST_F(ShownCardsTest, AClaimedCardThatReturnsIsKnown) {
  probes_["PCH"] = {Outcome::known, offer(2, 4)};
  claimed_ = {"alsa:PCH"};
  const auto before = show({card(0, "PCH", "A")});
  EXPECT_TRUE(show({}).empty());
  // A server that is faster has it open.
  probes_["PCH"] = {Outcome::notNow, offer(1, 1)};
  EXPECT_EQ(show({card(3, "PCH", "A")}, {3}), before);
  EXPECT_EQ(looks_.size(), 1U);
}

TEST_F(ShownCardsTest, ACardThatASessionOfOursRunsOnStaysAndIsLeftAlone) {
  probes_["PCH"] = {Outcome::known, offer(2, 2)};
  auto expected = show({card(0, "PCH", "A")});
  EXPECT_EQ(expected.at(0).alsaCards, std::vector<int>{0});
  shown_.lookAgain("alsa:PCH");
  probes_["PCH"] = {Outcome::notNow, offer(1, 1)};
  expected.at(0).alsaCards.clear();  // it stays listed even if somebody else lists the card
  EXPECT_EQ(show({card(0, "PCH", "A")}, {0}, {"alsa:PCH"}), expected);
  EXPECT_EQ(looks_.size(), 1U);
}

TEST_F(ShownCardsTest, NamesakesAreToldApartByTheirIdentities) {
  for (const char* id : {"USB", "USB_1", "PCH"}) probes_[id] = {Outcome::known, offer(2, 2)};
  const auto devices =
      show({card(0, "USB", "Scarlett"), card(1, "USB_1", "Scarlett"), card(2, "PCH", "PCH")});
  ASSERT_EQ(devices.size(), 3U);
  EXPECT_EQ(devices[0].name, "Scarlett (USB)");
  EXPECT_EQ(devices[1].name, "Scarlett (USB_1)");
  EXPECT_EQ(devices[2].name, "PCH");
}

TEST_F(ShownCardsTest, TheSettingsAskedForAreTriedAndKept) {
  probes_["PCH"] = {Outcome::known, offer(2, 2)};
  show({card(0, "PCH", "A")});
  EXPECT_EQ(asked_, CardSettings{});
  const CardSettings wanted{.rateHz = 96000, .periodFrames = 64, .periods = 2};
  shown_.set("alsa:PCH", wanted);
  EXPECT_EQ(shown_.settings("alsa:PCH"), wanted);
  EXPECT_EQ(shown_.settings("alsa:other"), CardSettings{});
  show({card(0, "PCH", "A")});
  EXPECT_EQ(asked_, wanted);
}

}  // namespace
}  // namespace tolvane::hal::alsa
