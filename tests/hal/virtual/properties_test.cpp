#include <gtest/gtest.h>

#include "hal/hal_client.h"
#include "hal/virtual/virtual_device.h"

namespace tolvane::test {

namespace {

class VirtualDeviceProperties : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(hal::configureVirtualDevice({}), noErr); }
  void TearDown() override { EXPECT_EQ(hal::configureVirtualDevice({}), noErr); }

  const AudioObjectID device_ = deviceList().back();
};

TEST_F(VirtualDeviceProperties, areWhatEveryUserFinds) {
  EXPECT_EQ(stringOf(device_, kAudioObjectPropertyName), "Tolvane Virtual Device");
  EXPECT_EQ(stringOf(device_, kAudioDevicePropertyDeviceUID), "virtual:tolvane");
  EXPECT_EQ(streamsOf(device_, kAudioObjectPropertyScopeInput), (std::vector<UInt32>{2, 16}));
  EXPECT_EQ(streamsOf(device_, kAudioObjectPropertyScopeOutput), std::vector<UInt32>(20, 1));
  EXPECT_EQ(valueOf<Float64>(device_, kAudioDevicePropertyNominalSampleRate), 48000.0);
  EXPECT_EQ(valueOf<UInt32>(device_, kAudioDevicePropertyBufferFrameSize), 512U);
  EXPECT_EQ(valueOf<UInt32>(device_, kAudioDevicePropertyDeviceIsAlive), 1U);
  EXPECT_EQ(valueOf<UInt32>(device_, kAudioDevicePropertyTransportType), kAudioDeviceTransportTypeVirtual);
  const auto range = valueOf<AudioValueRange>(device_, kAudioDevicePropertyBufferFrameSizeRange);
  EXPECT_EQ(range.mMinimum, 16.0);
  EXPECT_EQ(range.mMaximum, 8192.0);
}

TEST_F(VirtualDeviceProperties, areAtOnceWhatItWasConfiguredToBe) {
  hal::VirtualDeviceConfig config;
  config.name = "Zwölf \xFF Kanäle";
  config.inputStreams = {};
  config.outputStreams = {3, 0, 9};
  config.sampleRateHz = 44100.0;
  config.bufferFrames = 4;
  ASSERT_EQ(hal::configureVirtualDevice(config), noErr);
  EXPECT_EQ(stringOf(device_, kAudioObjectPropertyName), "Zwölf \uFFFD Kanäle");
  EXPECT_EQ(streamsOf(device_, kAudioObjectPropertyScopeInput), std::vector<UInt32>{});
  EXPECT_EQ(streamsOf(device_, kAudioObjectPropertyScopeOutput), (std::vector<UInt32>{3, 0, 9}));
  EXPECT_EQ(valueOf<Float64>(device_, kAudioDevicePropertyNominalSampleRate), 44100.0);
  EXPECT_EQ(valueOf<UInt32>(device_, kAudioDevicePropertyBufferFrameSize), 4U);
  EXPECT_EQ(deviceList().back(), device_);
}

TEST_F(VirtualDeviceProperties, channelsHaveTheNamesThatTheyWereGiven) {
  hal::VirtualDeviceConfig config;
  config.inputNames = {"Kick", "", "Vox"};
  config.outputNames = {"Wedge"};
  ASSERT_EQ(hal::configureVirtualDevice(config), noErr);
  const auto nameOf = [this](AudioObjectPropertyScope scope, AudioObjectPropertyElement channel) {
    const AudioObjectPropertyAddress where{kAudioObjectPropertyElementName, scope, channel};
    CFStringRef name = nullptr;
    UInt32 size = sizeof name;
    if (AudioObjectGetPropertyData(device_, &where, 0, nullptr, &size, &name) != noErr)
      return std::string("none");
    std::string text = textOf(name);
    CFRelease(name);
    return text;
  };
  EXPECT_EQ(nameOf(kAudioObjectPropertyScopeInput, 1), "Kick");
  EXPECT_EQ(nameOf(kAudioObjectPropertyScopeInput, 2), "none");
  EXPECT_EQ(nameOf(kAudioObjectPropertyScopeInput, 3), "Vox");
  EXPECT_EQ(nameOf(kAudioObjectPropertyScopeInput, 4), "none");
  EXPECT_EQ(nameOf(kAudioObjectPropertyScopeOutput, 1), "Wedge");
}

TEST_F(VirtualDeviceProperties, layoutsUpTo1024ChannelsAreRead) {
  for (const std::vector<UInt32>& streams :
       {std::vector<UInt32>{1}, {1024}, std::vector<UInt32>(1024, 1), {0, 512, 1, 511}}) {
    hal::VirtualDeviceConfig config;
    config.inputStreams = config.outputStreams = streams;
    ASSERT_EQ(hal::configureVirtualDevice(config), noErr);
    EXPECT_EQ(streamsOf(device_, kAudioObjectPropertyScopeInput), streams);
    EXPECT_EQ(streamsOf(device_, kAudioObjectPropertyScopeOutput), streams);
  }
}

TEST_F(VirtualDeviceProperties, refuseWhatCannotBe) {
  const auto refused = [](auto change) {
    hal::VirtualDeviceConfig config;
    change(config);
    return hal::configureVirtualDevice(config) == kAudioHardwareIllegalOperationError;
  };
  EXPECT_TRUE(refused([](auto& c) { c.inputStreams = {1025}; }));
  EXPECT_TRUE(refused([](auto& c) { c.outputStreams = {1000, 25}; }));
  EXPECT_TRUE(refused([](auto& c) { c.outputStreams = {0xFFFFFFFF, 2}; }));
  EXPECT_TRUE(refused([](auto& c) { c.bufferFrames = 0; }));
  EXPECT_TRUE(refused([](auto& c) { c.sampleRateHz = 0.0; }));
  EXPECT_TRUE(refused([](auto& c) { c.sampleRateHz = -48000.0; }));
  EXPECT_TRUE(refused([](auto& c) { c.sampleRateHz = std::numeric_limits<double>::quiet_NaN(); }));
  EXPECT_TRUE(refused([](auto& c) { c.sampleRateHz = std::numeric_limits<double>::infinity(); }));
  EXPECT_TRUE(refused([](auto& c) { c.inputStreamsWithoutData = {2}; }));
  EXPECT_TRUE(refused([](auto& c) { c.outputStreamsWithoutData = {20}; }));
  EXPECT_EQ(stringOf(device_, kAudioObjectPropertyName), "Tolvane Virtual Device");
}

}  // namespace

}  // namespace tolvane::test
