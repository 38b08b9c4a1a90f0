// What sessions report while they run.
#include "hal/registry/scripted_hal_test.h"

namespace tolvane::test {

namespace {

class Sessions : public ScriptedHal {};

TEST_F(Sessions, startsAndStopsReachTheDriver) {
  const AudioObjectID device = listOne(3, 2);
  std::atomic<int> cycles{0};
  RegisteredProc proc(device, [&](const AudioBufferList& input, AudioBufferList& output) {
    EXPECT_EQ(input.mNumberBuffers, 3U);
    EXPECT_EQ(output.mNumberBuffers, 2U);
    ++cycles;
  });
  EXPECT_EQ(first_.starts(), 0);
  ASSERT_EQ(proc.start(), noErr);
  EXPECT_EQ(first_.liveSessions(), 1);
  EXPECT_EQ(first_.startedWith().at(0), scriptedDevice("one", 3, 2));
  EXPECT_TRUE(first_.cycle(256));
  EXPECT_TRUE(first_.cycle(64));
  EXPECT_EQ(cycles.load(), 2);
  ASSERT_EQ(proc.stop(), noErr);
  EXPECT_EQ(first_.liveSessions(), 0);
}

TEST_F(Sessions, aStartWaitsForADriverThatWasTooLateForTheList) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  first_.listing.close();
  EXPECT_TRUE(deviceList().empty());
  std::thread opener([&] {
    std::this_thread::sleep_for(100ms);
    first_.listing.open();
  });
  EXPECT_EQ(proc.start(), noErr);
  opener.join();
  EXPECT_EQ(first_.liveSessions(), 1);
}

TEST_F(Sessions, aStartOnADeviceThatALateListLacksFails) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  first_.setDevices({});
  first_.listing.close();
  EXPECT_TRUE(deviceList().empty());
  first_.listing.open();
  EXPECT_EQ(proc.start(), kAudioHardwareBadDeviceError);
}

TEST_F(Sessions, failedStartsGiveTheDriversStatus) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  for (const OSStatus status : {OSStatus{kAudioDevicePermissionsError}, OSStatus{kAudioHardwareNotReadyError},
                                OSStatus{kAudioHardwareUnspecifiedError}}) {
    first_.setStartStatus(status);
    EXPECT_EQ(proc.start(), status);
    EXPECT_EQ(proc.stop(), noErr);
  }
  first_.setStartStatus(noErr);
  EXPECT_EQ(proc.start(), noErr);
  EXPECT_EQ(first_.starts(), 1);
}

TEST_F(Sessions, overloadsAreCountedAndHeardOneByOne) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  Listening overloads(device, kAudioDeviceProcessorOverload);
  ASSERT_EQ(proc.start(), noErr);
  for (int i = 0; i < 1000; ++i) first_.overload();
  EXPECT_EQ(valueOf<UInt32>(device, kAudioDeviceProcessorOverload), 1000U);
  EXPECT_TRUE(overloads.hears(1000));
  ASSERT_EQ(proc.stop(), noErr);
  Listening afterwards(device, kAudioDeviceProcessorOverload);
  EXPECT_EQ(overloads.count(), 1000);
  EXPECT_EQ(afterwards.count(), 0);
}

/// The channels whose links are reported as removed, in one direction.
std::vector<UInt32> removedLinks(AudioObjectID device, AudioObjectPropertyScope scope) {
  const auto where = address(kTolvaneDevicePropertyRemovedLinks, scope);
  UInt32 size = 0;
  EXPECT_EQ(AudioObjectGetPropertyDataSize(device, &where, 0, nullptr, &size), noErr);
  std::vector<UInt32> channels(size / sizeof(UInt32) + 1);
  EXPECT_EQ(AudioObjectGetPropertyData(device, &where, 0, nullptr, &size, channels.data()), noErr);
  channels.resize(size / sizeof(UInt32));
  return channels;
}

TEST_F(Sessions, removedLinksAreHeardAndForgottenAtTheStop) {
  constexpr auto kInput = kAudioObjectPropertyScopeInput;
  constexpr auto kOutput = kAudioObjectPropertyScopeOutput;
  const AudioObjectID device = listOne(8, 8);
  RegisteredProc proc(device, [](auto&, auto&) {});
  Heard heard;
  const auto where = address(kTolvaneDevicePropertyRemovedLinks, kOutput);
  ASSERT_EQ(AudioObjectAddPropertyListener(device, &where, hear, &heard), noErr);
  ASSERT_EQ(proc.start(), noErr);
  EXPECT_EQ(removedLinks(device, kInput), std::vector<UInt32>{});
  ASSERT_TRUE(first_.removeLinks({{1}, {0, 7}}));
  EXPECT_TRUE(eventually([&] { return heard.count.load() == 1; }));
  EXPECT_EQ(removedLinks(device, kInput), std::vector<UInt32>{1});
  EXPECT_EQ(removedLinks(device, kOutput), (std::vector<UInt32>{0, 7}));
  ASSERT_EQ(proc.stop(), noErr);
  EXPECT_EQ(removedLinks(device, kOutput), std::vector<UInt32>{});
  EXPECT_EQ(AudioObjectRemovePropertyListener(device, &where, hear, &heard), noErr);
}

// Two callbacks on one device: what one session has reported outlives the other's.
TEST_F(Sessions, theEndOfAnotherSessionForgetsNothing) {
  const AudioObjectID device = listOne(8, 8);
  RegisteredProc proc(device, [](auto&, auto&) {});
  RegisteredProc other(device, [](auto&, auto&) {});
  const auto expectReported = [&] {
    EXPECT_EQ(valueOf<Float64>(device, kAudioDevicePropertyNominalSampleRate), 44100.0);
    EXPECT_EQ(valueOf<UInt32>(device, kAudioDevicePropertyBufferFrameSize), 96U);
    EXPECT_EQ(removedLinks(device, kAudioObjectPropertyScopeOutput), std::vector<UInt32>{7});
  };
  ASSERT_EQ(proc.start(), noErr);
  ASSERT_TRUE(first_.setFormat(44100.0, 96));
  ASSERT_TRUE(first_.removeLinks({{}, {7}}));
  first_.setStartStatus(kAudioDevicePermissionsError);
  EXPECT_EQ(other.start(), kAudioDevicePermissionsError);
  expectReported();
  EXPECT_EQ(other.stop(), noErr);
  first_.setStartStatus(noErr);
  ASSERT_EQ(other.start(), noErr);
  ASSERT_EQ(other.stop(), noErr);
  expectReported();
  ASSERT_EQ(proc.stop(), noErr);
  EXPECT_EQ(valueOf<Float64>(device, kAudioDevicePropertyNominalSampleRate), 48000.0);
  EXPECT_EQ(removedLinks(device, kAudioObjectPropertyScopeOutput), std::vector<UInt32>{});
}

TEST_F(Sessions, overloadsJustBeforeAStopAreHeard) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  Listening overloads(device, kAudioDeviceProcessorOverload);
  ASSERT_EQ(proc.start(), noErr);
  first_.overload();
  ASSERT_EQ(proc.stop(), noErr);
  EXPECT_TRUE(overloads.hears(1));
}

TEST_F(Sessions, formatsAreReadAndHeardUntilTheSessionEnds) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  Listening rate(device, kAudioDevicePropertyNominalSampleRate);
  Listening frames(device, kAudioDevicePropertyBufferFrameSize);
  ASSERT_EQ(proc.start(), noErr);
  first_.setFormat(44100.0, 1024);
  EXPECT_EQ(valueOf<Float64>(device, kAudioDevicePropertyNominalSampleRate), 44100.0);
  EXPECT_EQ(valueOf<UInt32>(device, kAudioDevicePropertyBufferFrameSize), 1024U);
  EXPECT_TRUE(rate.hears(1));
  EXPECT_TRUE(frames.hears(1));
  first_.setFormat(44100.0, 64);
  EXPECT_TRUE(frames.hears(2));
  ASSERT_EQ(proc.stop(), noErr);
  EXPECT_EQ(valueOf<Float64>(device, kAudioDevicePropertyNominalSampleRate), 48000.0);
  EXPECT_EQ(valueOf<UInt32>(device, kAudioDevicePropertyBufferFrameSize), 256U);
  EXPECT_TRUE(rate.hears(2));
  EXPECT_TRUE(frames.hears(3));
}

}  // namespace

}  // namespace tolvane::test
