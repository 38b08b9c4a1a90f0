// The settings of a scripted HAL's device, and what it is with them.
#include "ctl/devices/device_settings.h"

#include <gtest/gtest.h>

#include "support/scripted_hal.h"

namespace tolvane::ctl {
namespace {

class DeviceSettingsTest : public testing::Test {
 protected:
  DeviceSettingsTest() {
    hal_.devices.push_back({.id = 7, .name = "Box", .inputStreams = {8}, .outputStreams = {8, 2}});
    hal_.devices[0].sampleRates = {{48000.0, 48000.0}, {96000.0, 96000.0}};
  }

  test::ScriptedHal hal_;
  AudioDeviceInfo device_{7, "Box", 8, 10};
};

TEST_F(DeviceSettingsTest, TheDeviceGetsTheChannelsOfItsNewRate) {
  hal_.onCall = [this](const std::string& call) {
    if (!call.starts_with("AudioObjectSetPropertyData")) return;
    hal_.devices[0].inputStreams = {4};
    hal_.devices[0].outputStreams = {4, 2};
  };
  EXPECT_FALSE(applySettings(device_, {.sampleRateHz = 96000}));
  EXPECT_EQ(hal_.devices[0].sampleRate, 96000.0);
  EXPECT_EQ(device_.inputChannels, 4);
  EXPECT_EQ(device_.outputChannels, 6);
}

TEST_F(DeviceSettingsTest, ARateThatComesLateIsAwaited) {
  int asked = 0;
  hal_.onCall = [&](const std::string& call) {
    if (!call.starts_with("AudioObjectGetPropertyData(7, nsrt")) return;
    hal_.devices[0].sampleRate = ++asked < 4 ? 48000.0 : 96000.0;
  };
  EXPECT_FALSE(applySettings(device_, {.sampleRateHz = 96000}));
  EXPECT_EQ(asked, 4);
}

TEST_F(DeviceSettingsTest, WithoutAnyTheDeviceIsLeftAlone) {
  EXPECT_FALSE(applySettings(device_, {}));
  EXPECT_TRUE(hal_.calls().empty());
}

}  // namespace
}  // namespace tolvane::ctl
