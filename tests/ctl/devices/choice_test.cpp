#include "ctl/devices/choice.h"

#include <gtest/gtest.h>

#include "support/scripted_hal.h"

namespace tolvane::ctl {
namespace {

const std::vector<AudioDeviceInfo> kDevices = {
    {10, "Built-in Audio", 2, 2},
    {11, "Stage Box", 16, 16},
    {12, "Stage Box Monitor", 0, 8},
    {13, "12", 1, 1},
    {14, "Twin", 2, 2},
    {15, "Twin", 2, 2},
};

AudioDeviceID chosen(const std::string& wanted) {
  const DeviceChoice choice = chooseDevice(kDevices, wanted);
  return choice ? choice.value().id : 0;
}

TEST(DeviceChoice, FirstWhenNothingIsWanted) {
  EXPECT_EQ(chosen(""), 10U);
}

TEST(DeviceChoice, ExactNameBeforeAPartOfAnother) {
  EXPECT_EQ(chosen("Stage Box"), 11U);
}

TEST(DeviceChoice, ExactNameBeforeANumber) {
  EXPECT_EQ(chosen("12"), 13U);
}

TEST(DeviceChoice, NumberIsAnIdentifier) {
  EXPECT_EQ(chosen("11"), 11U);
  EXPECT_EQ(chosen("15"), 15U);
}

TEST(DeviceChoice, NumberThatIsNoIdentifierIsNoPartOfAName) {
  EXPECT_EQ(chosen("1"), 0U);
  EXPECT_EQ(chosen("4294967307"), 0U);  // would be 11 if truncated to 32 bits
}

TEST(DeviceChoice, PartOfANameWhateverTheCapitals) {
  EXPECT_EQ(chosen("BUILT"), 10U);
  EXPECT_EQ(chosen("monitor"), 12U);
}

TEST(DeviceChoice, RefusesAPartOfSeveralNames) {
  const DeviceChoice choice = chooseDevice(kDevices, "stage");
  ASSERT_FALSE(choice);
  EXPECT_EQ(choice.error().status, ExitStatus::noSuchDevice);
  EXPECT_EQ(
      choice.error().text,
      "several devices are called \"stage\", give an identifier; the devices are:\n  10  Built-in Audio\n"
      "  11  Stage Box\n  12  Stage Box Monitor\n  13  12\n  14  Twin\n  15  Twin");
}

TEST(DeviceChoice, RefusesANameThatSeveralHave) {
  EXPECT_EQ(chosen("Twin"), 0U);
}

TEST(DeviceChoice, ListsNamesThatWouldDriveATerminalEscaped) {
  const DeviceChoice choice = chooseDevice({{7, "Box\033[2J\n  8  Fake\xC2\x9B", 1, 1}}, "a\nb");
  ASSERT_FALSE(choice);
  EXPECT_EQ(choice.error().text,
            "no device is called \"a\\nb\"; the devices are:\n  7  Box\\x1b[2J\\n  8  Fake\\u009b");
}

TEST(DeviceChoice, RefusesWithoutAnyDevice) {
  const DeviceChoice choice = chooseDevice({}, "");
  ASSERT_FALSE(choice);
  EXPECT_EQ(choice.error().status, ExitStatus::noSuchDevice);
  EXPECT_EQ(choice.error().text, "there is no audio device");
}

/// Choosing between the virtual device and another one, with and without a silent server.
class ListedChoice : public testing::Test {
 protected:
  ListedChoice() {
    hal_.devices.push_back({.id = 20, .name = "Box", .transport = kAudioDeviceTransportTypeJack});
    hal_.devices.push_back({.id = 21, .name = "Built in", .uid = "virtual:x"});
  }

  static AudioDeviceID chosen(const DeviceListing& listing, const std::string& wanted) {
    const DeviceChoice choice = chooseListed(listing, wanted);
    return choice ? choice.value().id : kAudioObjectUnknown;
  }

  test::ScriptedHal hal_;
  const AudioDeviceInfo box_{20, "Box", 2, 2};
  const AudioDeviceInfo virtual_{21, "Built in", 2, 2};
};

TEST_F(ListedChoice, OfAllIsAsItIsChosen) {
  EXPECT_EQ(chosen({{box_, virtual_}, ""}, ""), 20U);
  EXPECT_EQ(chosen({{virtual_}, ""}, ""), 21U);
  EXPECT_EQ(chosen({{box_, virtual_}, ""}, "21"), 21U);
  EXPECT_EQ(chooseListed({{box_}, ""}, "Piano").error().status, ExitStatus::noSuchDevice);
}

TEST_F(ListedChoice, IsNoStopgapForWhatASilentServerMayHave) {
  EXPECT_EQ(chooseListed({{virtual_}, "pipewire"}, "").error().status, ExitStatus::failed);
  EXPECT_EQ(chooseListed({{box_, virtual_}, "pipewire"}, "20").error().status, ExitStatus::failed);
  EXPECT_EQ(chooseListed({{box_, virtual_}, "pipewire"}, "Piano").error().status, ExitStatus::failed);
  EXPECT_EQ(chooseListed({{}, "pipewire"}, "").error().status, ExitStatus::failed);
}

TEST_F(ListedChoice, TakesAnotherServersDeviceAndOneThatIsNamed) {
  EXPECT_EQ(chosen({{box_, virtual_}, "pipewire"}, ""), 20U);
  EXPECT_EQ(chosen({{box_, virtual_}, "pipewire"}, "bo"), 20U);
  EXPECT_EQ(chosen({{box_, virtual_}, "pipewire"}, "Built in"), 21U);
}

TEST_F(ListedChoice, IsByLastingIdentityBeforeAnyName) {
  EXPECT_EQ(chosen({{box_, virtual_}, ""}, "virtual:x"), 21U);
  EXPECT_EQ(chosen({{box_, virtual_}, "pipewire"}, "virtual:x"), 21U);
  const AudioDeviceInfo impostor{20, "virtual:x", 2, 2};
  EXPECT_EQ(chosen({{impostor, virtual_}, ""}, "virtual:x"), 21U);
  EXPECT_EQ(chosen({{box_, virtual_}, ""}, "virtual:"), 0U);  // only as a whole
}

TEST_F(ListedChoice, OfSeveralIsNoneWhoeverIsSilent) {
  EXPECT_EQ(chooseListed({{box_, virtual_}, "pipewire"}, "b").error().status, ExitStatus::noSuchDevice);
}

TEST_F(ListedChoice, NamesAllServersThatAreSilent) {
  EXPECT_EQ(silenceOf({{}, "jack, pipewire"}).text, "the sound servers jack, pipewire do not answer");
}

}  // namespace
}  // namespace tolvane::ctl
