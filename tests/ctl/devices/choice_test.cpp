#include "ctl/devices/choice.h"

#include <algorithm>
#include <utility>

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

/// Waiting for a sound card that a sound server uses.
class ClaimedChoice : public testing::Test {
 protected:
  ClaimedChoice() {
    hal_.devices.push_back({.id = 20, .name = "Box", .inputStreams = {2}, .uid = "server:box"});
  }

  static DeviceChoice awaitCard(double seconds) {
    return awaitDeviceToRun("alsa:box", seconds, [] { return false; });
  }
  [[nodiscard]] std::size_t claims() const {
    const auto& calls = hal_.calls();
    return static_cast<std::size_t>(std::count_if(calls.begin(), calls.end(), [](const std::string& call) {
      return call.find("clam") != std::string::npos;
    }));
  }

  test::ScriptedHal hal_;
};

TEST_F(ClaimedChoice, IsTheCardThatTheServerReleases) {
  hal_.onClaim = [this](const std::string& uid) {
    EXPECT_EQ(uid, "alsa:box");
    hal_.devices = {{.id = 21, .name = "Card", .inputStreams = {2}, .uid = uid}};
    return OSStatus{noErr};
  };
  for (const double seconds : {0.0, 10.0}) {
    hal_.devices = {{.id = 20, .name = "Box", .inputStreams = {2}, .uid = "server:box"}};
    const DeviceChoice choice = awaitCard(seconds);
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice.value().id, 21U);
  }
  EXPECT_EQ(claims(), 2U);
}

TEST_F(ClaimedChoice, WaitsForACardThatComesLater) {
  int asked = 0;
  hal_.onClaim = [&](const std::string& uid) {
    if (++asked < 3) return OSStatus{kAudioHardwareBadDeviceError};
    hal_.devices = {{.id = 21, .name = "Card", .inputStreams = {2}, .uid = uid}};
    return OSStatus{noErr};
  };
  EXPECT_TRUE(awaitCard(10.0));
}

TEST_F(ClaimedChoice, OfACardThatIsListedClaimsNothing) {
  hal_.devices.push_back({.id = 21, .name = "Card", .inputStreams = {2}, .uid = "alsa:box"});
  EXPECT_TRUE(awaitCard(0.0));
  EXPECT_TRUE(awaitDeviceToRun("", 0.0, [] { return false; }));
  EXPECT_TRUE(awaitDeviceToRun("Box", 0.0, [] { return false; }));
  EXPECT_EQ(claims(), 0U);
}

TEST_F(ClaimedChoice, OfACardThatNobodyHasIsNone) {
  EXPECT_EQ(awaitCard(0.0).error().status, ExitStatus::noSuchDevice);
}

TEST_F(ClaimedChoice, OnlyARunClaims) {
  EXPECT_FALSE(awaitDevice("alsa:box", 0.0, [] { return false; }));
  EXPECT_EQ(claims(), 0U);
}

TEST_F(ClaimedChoice, SaysAtOnceWhyTheCardCannotBeHad) {
  const std::pair<OSStatus, const char*> reasons[] = {
      {kAudioDevicePermissionsError, "a sound server uses this card and keeps it"},
      {kAudioHardwareUnsupportedOperationError,
       "a sound server uses this card, and there is no session bus to ask for it"},
      {kAudioHardwareNotReadyError, "a sound server uses this card and does not answer"},
      {kTolvaneExhaustedError, "the card cannot be asked for: no thread, memory or descriptor is left"}};
  for (const auto& [status, reason] : reasons) {
    hal_.onClaim = [status = status](const std::string&) { return status; };
    const DeviceChoice choice = awaitCard(3600.0);
    ASSERT_FALSE(choice);
    EXPECT_EQ(choice.error().text, std::string("alsa:box: ") + reason);
    EXPECT_EQ(choice.error().status, ExitStatus::failed);
  }
}

}  // namespace
}  // namespace tolvane::ctl
