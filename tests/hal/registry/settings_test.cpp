// The properties that a client can set.
#include <cmath>

#include "hal/registry/scripted_hal_test.h"

namespace tolvane::test {

namespace {

template <typename Value>
OSStatus set(AudioObjectID device, AudioObjectPropertySelector selector, Value value) {
  const auto where = address(selector);
  return AudioObjectSetPropertyData(device, &where, 0, nullptr, sizeof value, &value);
}

class Settings : public ScriptedHal {
 protected:
  /// A device whose hardware the driver knows.
  AudioObjectID listHardware() {
    auto device = scriptedDevice("card", 1, 1);
    device.sampleRatesHz = {44100.0, 48000.0, 96000.0};
    device.periods = 3;
    device.minPeriods = 2;
    device.maxPeriods = 8;
    first_.setDevices({device});
    return deviceList().at(0);
  }
};

TEST_F(Settings, bufferFramesAreSetThroughTheDriver) {
  const AudioObjectID device = listOne();
  const auto where = address(kAudioDevicePropertyBufferFrameSize);
  const auto range = valueOf<AudioValueRange>(device, kAudioDevicePropertyBufferFrameSizeRange);
  EXPECT_EQ(range.mMinimum, 32.0);
  EXPECT_EQ(range.mMaximum, 4096.0);
  Listening frames(device, kAudioDevicePropertyBufferFrameSize);
  UInt32 wanted = 128;
  EXPECT_EQ(AudioObjectSetPropertyData(device, &where, 0, nullptr, 4, &wanted), noErr);
  EXPECT_EQ(valueOf<UInt32>(device, kAudioDevicePropertyBufferFrameSize), 128U);
  EXPECT_TRUE(frames.hears(1));
  wanted = 31;
  EXPECT_EQ(AudioObjectSetPropertyData(device, &where, 0, nullptr, 4, &wanted),
            kAudioHardwareIllegalOperationError);
  wanted = 512;
  first_.setSettingStatus(kAudioDevicePermissionsError);
  EXPECT_EQ(AudioObjectSetPropertyData(device, &where, 0, nullptr, 4, &wanted), kAudioDevicePermissionsError);
  first_.setSettingStatus(noErr);
  first_.setting.close();
  EXPECT_EQ(AudioObjectSetPropertyData(device, &where, 0, nullptr, 4, &wanted), kAudioHardwareNotReadyError);
  EXPECT_EQ(valueOf<UInt32>(device, kAudioDevicePropertyBufferFrameSize), 128U);
  first_.setDevices({});
  deviceList();
  EXPECT_EQ(AudioObjectSetPropertyData(device, &where, 0, nullptr, 4, &wanted), kAudioHardwareBadDeviceError);
}

TEST_F(Settings, bufferFramesOfADeviceWithoutARangeCannotBeSet) {
  auto fixed = scriptedDevice("fixed", 1, 1);
  fixed.minBufferFrames = fixed.maxBufferFrames = 0;
  first_.setDevices({fixed});
  const AudioObjectID device = deviceList().at(0);
  const auto where = address(kAudioDevicePropertyBufferFrameSize);
  const auto range = valueOf<AudioValueRange>(device, kAudioDevicePropertyBufferFrameSizeRange);
  EXPECT_EQ(range.mMinimum, 256.0);
  EXPECT_EQ(range.mMaximum, 256.0);
  UInt32 wanted = 128;
  EXPECT_EQ(AudioObjectSetPropertyData(device, &where, 0, nullptr, 4, &wanted),
            kAudioHardwareUnsupportedOperationError);
  wanted = 256;
  EXPECT_EQ(AudioObjectSetPropertyData(device, &where, 0, nullptr, 4, &wanted), noErr);
}

TEST_F(Settings, theRateIsSetThroughTheDriverToOneOfItsOwn) {
  const AudioObjectID device = listHardware();
  constexpr auto kRate = kAudioDevicePropertyNominalSampleRate;
  Listening rate(device, kRate);
  EXPECT_EQ(set<Float64>(device, kRate, 96000.0), noErr);
  EXPECT_EQ(valueOf<Float64>(device, kRate), 96000.0);
  EXPECT_TRUE(rate.hears(1));
  EXPECT_EQ(set<Float64>(device, kRate, 88200.0), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(set<Float64>(device, kRate, std::nan("")), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(set<UInt32>(device, kRate, 44100), kAudioHardwareBadPropertySizeError);
  first_.setSettingStatus(kAudioDevicePermissionsError);
  EXPECT_EQ(set<Float64>(device, kRate, 44100.0), kAudioDevicePermissionsError);
  EXPECT_EQ(valueOf<Float64>(device, kRate), 96000.0);
  first_.setDevices({});
  deviceList();
  EXPECT_EQ(set<Float64>(device, kRate, 44100.0), kAudioHardwareBadDeviceError);
}

TEST_F(Settings, theRatesAreListedAsRanges) {
  const AudioObjectID device = listHardware();
  const auto where = address(kAudioDevicePropertyAvailableNominalSampleRates);
  UInt32 size = 0;
  ASSERT_EQ(AudioObjectGetPropertyDataSize(device, &where, 0, nullptr, &size), noErr);
  ASSERT_EQ(size, 3 * sizeof(AudioValueRange));
  AudioValueRange ranges[3]{};
  ASSERT_EQ(AudioObjectGetPropertyData(device, &where, 0, nullptr, &size, ranges), noErr);
  EXPECT_EQ(ranges[0].mMinimum, 44100.0);
  EXPECT_EQ(ranges[0].mMaximum, 44100.0);
  EXPECT_EQ(ranges[2].mMinimum, 96000.0);
}

TEST_F(Settings, aFixedRateCannotBeSetAndIsTheOnlyOne) {
  const AudioObjectID device = listOne();
  const auto only = valueOf<AudioValueRange>(device, kAudioDevicePropertyAvailableNominalSampleRates);
  EXPECT_EQ(only.mMinimum, 48000.0);
  EXPECT_EQ(only.mMaximum, 48000.0);
  constexpr auto kRate = kAudioDevicePropertyNominalSampleRate;
  EXPECT_EQ(set<Float64>(device, kRate, 44100.0), kAudioHardwareUnsupportedOperationError);
  EXPECT_EQ(set<Float64>(device, kRate, 48000.0), noErr);
}

TEST_F(Settings, thePeriodsAreSetThroughTheDriverWithinTheirRange) {
  const AudioObjectID device = listHardware();
  const auto range = valueOf<AudioValueRange>(device, kTolvaneDevicePropertyPeriodsRange);
  EXPECT_EQ(range.mMinimum, 2.0);
  EXPECT_EQ(range.mMaximum, 8.0);
  Listening periods(device, kTolvaneDevicePropertyPeriods);
  EXPECT_EQ(valueOf<UInt32>(device, kTolvaneDevicePropertyPeriods), 3U);
  EXPECT_EQ(set<UInt32>(device, kTolvaneDevicePropertyPeriods, 2), noErr);
  EXPECT_EQ(valueOf<UInt32>(device, kTolvaneDevicePropertyPeriods), 2U);
  EXPECT_TRUE(periods.hears(1));
  EXPECT_EQ(set<UInt32>(device, kTolvaneDevicePropertyPeriods, 9), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(set<Float64>(device, kTolvaneDevicePropertyPeriods, 2.0), kAudioHardwareBadPropertySizeError);
}

TEST_F(Settings, aDeviceWhoseHardwareIsNotKnownHasNoPeriods) {
  const AudioObjectID device = listOne();
  for (const auto selector : {kTolvaneDevicePropertyPeriods, kTolvaneDevicePropertyPeriodsRange}) {
    const auto where = address(selector);
    std::byte room[16];
    UInt32 size = sizeof room;
    EXPECT_EQ(AudioObjectGetPropertyData(device, &where, 0, nullptr, &size, room),
              kAudioHardwareUnsupportedOperationError);
  }
  EXPECT_EQ(set<UInt32>(device, kTolvaneDevicePropertyPeriods, 2), kAudioHardwareUnsupportedOperationError);
}

}  // namespace

}  // namespace tolvane::test
