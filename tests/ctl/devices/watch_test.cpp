// The differences between two device lists, and their text.
#include "ctl/devices/watch.h"

#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/scripted_hal.h"

namespace tolvane::ctl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

DeviceDetails device(AudioDeviceID id, const std::string& name, std::int64_t inputs = 2) {
  return {{id, name, inputs, 1}, "pipewire", 48000.0, 256};
}

std::vector<AudioDeviceID> ids(const std::vector<DeviceDetails>& devices) {
  std::vector<AudioDeviceID> ids;
  for (const DeviceDetails& each : devices) ids.push_back(each.info.id);
  return ids;
}

TEST(DeviceChanges, AreNoneBetweenEqualLists) {
  const std::vector<DeviceDetails> list = {device(5, "A"), device(6, "B")};
  EXPECT_THAT(changesBetween(list, list).arrived, IsEmpty());
  EXPECT_THAT(changesBetween(list, list).departed, IsEmpty());
}

TEST(DeviceChanges, KeepTheOrderOfTheirLists) {
  const DeviceChanges changes = changesBetween({device(5, "A"), device(6, "B"), device(7, "C")},
                                               {device(9, "E"), device(6, "B"), device(8, "D")});
  EXPECT_THAT(ids(changes.departed), ElementsAre(5, 7));
  EXPECT_THAT(ids(changes.arrived), ElementsAre(9, 8));
}

TEST(DeviceChanges, TakeOtherChannelsOrAnotherNameForAnotherDevice) {
  const DeviceChanges channels = changesBetween({device(5, "A", 2)}, {device(5, "A", 8)});
  EXPECT_EQ(channels.departed.at(0).info.inputChannels, 2);
  EXPECT_EQ(channels.arrived.at(0).info.inputChannels, 8);
  const DeviceChanges name = changesBetween({device(5, "A")}, {device(5, "Other")});
  EXPECT_EQ(name.departed.at(0).info.name, "A");
  EXPECT_EQ(name.arrived.at(0).info.name, "Other");
}

TEST(DeviceChanges, AreNotTheOrderNorTheBuffer) {
  DeviceDetails other = device(5, "A");
  other.bufferFrames = 1024;
  const DeviceChanges changes = changesBetween({device(5, "A"), device(6, "B")}, {device(6, "B"), other});
  EXPECT_THAT(changes.departed, IsEmpty());
  EXPECT_THAT(changes.arrived, IsEmpty());
}

TEST(DeviceEvent, IsALineWithoutControlCharacters) {
  EXPECT_EQ(deviceEventLine("arrived", device(12, "Odd\033[31m", 2)),
            "arrived: 12  Odd\\x1b[31m  (2 inputs, 1 output, pipewire)\n");
  DeviceDetails told = device(12, "Odd", 2);
  told.uid = "pipewire:odd\n";
  EXPECT_EQ(deviceEventLine("arrived", told, TableForm::longer),
            "arrived: 12  Odd  (2 inputs, 1 output, pipewire)  pipewire:odd\\n\n");
}

TEST(DeviceEvent, IsAJsonObjectOnALine) {
  DeviceDetails told = device(12, "Line\nfeed\xFF", 2);
  told.sampleRateHz.reset();
  told.uid = "pipewire:line";
  EXPECT_EQ(deviceEventJson("departed", told),
            "{\"event\":\"departed\",\"id\":12,\"uid\":\"pipewire:line\",\"name\":"
            "\"Line\\nfeed\xEF\xBF\xBD\",\"inputChannels\":2,"
            "\"outputChannels\":1,\"driver\":\"pipewire\",\"sampleRate\":null,\"bufferFrames\":256,"
            "\"cardUid\":null}\n");
}

TEST(DeviceWatch, LeavesNothingBehindInTheHal) {
  test::ScriptedHal hal;
  hal.onCall = [](const std::string& call) {
    if (call.starts_with("AudioObjectGetPropertyData(1, dev#")) ::kill(::getpid(), SIGINT);
  };
  hal.devices.push_back({.id = 7, .name = "Box", .inputStreams = {2}});
  testing::internal::CaptureStdout();
  EXPECT_EQ(watchDevices({.json = true, .waitSeconds = 0.0}), ExitStatus::done);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "{\"event\":\"present\",\"id\":7,\"uid\":null,\"name\":\"Box\",\"inputChannels\":2,"
            "\"outputChannels\":0,"
            "\"driver\":\"virtual\",\"sampleRate\":48000.0,\"bufferFrames\":512,\"cardUid\":null}\n");
  EXPECT_EQ(hal.notify(kAudioObjectSystemObject, kAudioHardwarePropertyDevices), 0U);
}

TEST(DeviceWatch, PrintsTheListWhenASignalEndsTheWait) {
  test::ScriptedHal hal;
  hal.silentServers = "pipewire";
  hal.onCall = [](const std::string& call) {
    if (call.starts_with("AudioObjectGetPropertyData(1, dev#")) ::kill(::getpid(), SIGINT);
  };
  hal.devices.push_back({.id = 7, .name = "Box", .inputStreams = {2}});
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(watchDevices({.json = true, .waitSeconds = 1000.0}), ExitStatus::done);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr("\"present\",\"id\":7,"));
}

}  // namespace
}  // namespace tolvane::ctl
