// The device list: its order, its identifiers, and drivers that do not answer.
#include "hal/registry/scripted_hal_test.h"

namespace tolvane::test {

namespace {

using namespace std::chrono_literals;

class DeviceList : public ScriptedHal {};

std::vector<std::string> uids() {
  std::vector<std::string> uids;
  for (const AudioObjectID id : deviceList()) uids.push_back(stringOf(id, kAudioDevicePropertyDeviceUID));
  return uids;
}

using Uids = std::vector<std::string>;

std::string silentServers() {
  return stringOf(kAudioObjectSystemObject, kTolvanePropertySilentServers);
}

TEST_F(DeviceList, isEmptyWithoutDevices) {
  const auto list = address(kAudioHardwarePropertyDevices);
  UInt32 size = 99;
  EXPECT_EQ(AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &list, 0, nullptr, &size), noErr);
  EXPECT_EQ(size, 0U);
}

TEST_F(DeviceList, keepsTheOrderOfDriversAndOfTheirDevices) {
  first_.setDevices({scriptedDevice("c", 1, 1), scriptedDevice("a", 1, 1)});
  second_.setDevices({scriptedDevice("d", 1, 1), scriptedDevice("b", 1, 1)});
  EXPECT_EQ(uids(), (Uids{"c", "a", "d", "b"}));
  first_.setDevices({scriptedDevice("a", 1, 1), scriptedDevice("c", 1, 1)});
  EXPECT_EQ(uids(), (Uids{"a", "c", "d", "b"}));
}

TEST_F(DeviceList, namesNoDeviceTwice) {
  first_.setDevices({scriptedDevice("x", 1, 1), scriptedDevice("x", 2, 2)});
  second_.setDevices({scriptedDevice("x", 3, 3), scriptedDevice("y", 4, 4)});
  EXPECT_EQ(uids(), (Uids{"x", "y"}));
  const auto list = deviceList();
  EXPECT_EQ(streamsOf(list[0], kAudioObjectPropertyScopeInput).size(), 1U);
}

TEST_F(DeviceList, aDeviceMovesToTheDriverThatStillNamesIt) {
  first_.setDevices({scriptedDevice("x", 1, 1)});
  second_.setDevices({scriptedDevice("x", 3, 3)});
  const AudioObjectID id = deviceList().at(0);
  first_.setDevices({});
  deviceList();
  EXPECT_EQ(deviceList(), std::vector<AudioObjectID>{id});
  EXPECT_EQ(streamsOf(id, kAudioObjectPropertyScopeInput).size(), 3U);
  EXPECT_TRUE(alive(id));
}

TEST_F(DeviceList, identifiersAreADevicesForEver) {
  first_.setDevices({scriptedDevice("p", 1, 1), scriptedDevice("q", 1, 1)});
  const auto before = deviceList();
  ASSERT_EQ(before.size(), 2U);
  EXPECT_GE(before[0], 2U);
  first_.setDevices({scriptedDevice("r", 1, 1)});
  const auto other = deviceList();
  ASSERT_EQ(other.size(), 1U);
  EXPECT_NE(other[0], before[0]);
  EXPECT_NE(other[0], before[1]);
  first_.setDevices({scriptedDevice("q", 1, 1), scriptedDevice("p", 1, 1)});
  EXPECT_EQ(deviceList(), (std::vector<AudioObjectID>{before[1], before[0]}));
}

TEST_F(DeviceList, aDeviceThatIsGoneIsNotAliveAndKeepsItsName) {
  const AudioObjectID id = listOne();
  EXPECT_TRUE(alive(id));
  first_.setDevices({});
  EXPECT_TRUE(deviceList().empty());
  EXPECT_FALSE(alive(id));
  EXPECT_EQ(stringOf(id, kAudioObjectPropertyName), "Device one");
  RegisteredProc proc(id, [](auto&, auto&) {});
  EXPECT_EQ(proc.start(), kAudioHardwareBadDeviceError);
}

TEST_F(DeviceList, asksADriverOnceForSizeAndData) {
  listOne();
  const int before = first_.listings();
  deviceList();
  EXPECT_EQ(first_.listings(), before + 1);
}

TEST_F(DeviceList, leavesOutADriverThatHangsAndListsItWhenItIsBack) {
  first_.setDevices({scriptedDevice("slow", 1, 1)});
  second_.setDevices({scriptedDevice("quick", 1, 1)});
  EXPECT_EQ(uids(), (Uids{"slow", "quick"}));
  const auto both = deviceList();
  first_.listing.close();
  EXPECT_EQ(uids(), (Uids{"quick"}));
  EXPECT_FALSE(alive(both[0]));
  EXPECT_TRUE(alive(both[1]));
  const int asked = first_.listings();
  for (int i = 0; i < 5; ++i) EXPECT_EQ(uids(), (Uids{"quick"}));
  EXPECT_EQ(first_.listings(), asked);  // no new call while it hangs
  RegisteredProc proc(both[0], [](auto&, auto&) {});
  EXPECT_EQ(proc.start(), kAudioHardwareNotReadyError);
  Listening list(kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
  Listening life(both[0], kAudioDevicePropertyDeviceIsAlive);
  first_.listing.open();
  EXPECT_TRUE(list.hears(1));  // without another request
  EXPECT_TRUE(life.hears(1));
  EXPECT_TRUE(alive(both[0]));
  EXPECT_EQ(deviceList(), both);
}

TEST_F(DeviceList, takesALateAnswerAndDoesNotAskForItAgain) {
  first_.setDevices({scriptedDevice("slow", 1, 1)});
  const auto before = deviceList();
  ASSERT_EQ(before.size(), 1U);
  Listening list(kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
  first_.listing.close();
  first_.notify();
  ASSERT_TRUE(list.hears(1));  // it is late
  const int asked = first_.listings();
  first_.listing.open();
  ASSERT_TRUE(list.hears(2));
  EXPECT_TRUE(alive(before[0]));  // a query asks the driver first if it has news
  EXPECT_EQ(first_.listings(), asked);
  EXPECT_EQ(deviceList(), before);
}

TEST_F(DeviceList, theFirstOneWaitsForADriverThatIsLate) {
  first_.setDevices({scriptedDevice("late", 1, 1)});
  second_.setDevices({scriptedDevice("quick", 1, 1)});
  first_.listing.close();
  std::thread opener([&] {
    EXPECT_TRUE(eventually([&] { return first_.listing.held() == 1; }));
    std::this_thread::sleep_for(400ms);
    first_.listing.open();
  });
  EXPECT_EQ(uids(), (Uids{"late", "quick"}));
  EXPECT_EQ(silentServers(), "");
  opener.join();
}

TEST_F(DeviceList, namesTheServersThatAreMissingInTheThreadsLastOne) {
  first_.setDevices({scriptedDevice("slow", 1, 1)});
  second_.setDevices({scriptedDevice("quick", 1, 1)});
  EXPECT_EQ(silentServers(), "");
  first_.listing.close();
  EXPECT_EQ(uids(), (Uids{"quick"}));
  EXPECT_EQ(silentServers(), "scripted");
  second_.listing.close();
  EXPECT_EQ(uids(), Uids{});
  EXPECT_EQ(silentServers(), "scripted, scripted");
  first_.listing.open();
  second_.listing.open();
  EXPECT_TRUE(eventually([] { return uids().size() == 2; }));
  EXPECT_EQ(silentServers(), "");
}

TEST_F(DeviceList, leavesOutADriverWhoseServerIsSilentUntilThatAnswers) {
  first_.setDevices({scriptedDevice("slow", 1, 1)});
  second_.setDevices({scriptedDevice("quick", 1, 1)});
  EXPECT_EQ(uids(), (Uids{"slow", "quick"}));
  first_.setSilent(true);
  for (int ask = 0; ask < 3; ++ask) {
    EXPECT_EQ(uids(), Uids{"quick"});
    EXPECT_EQ(silentServers(), "scripted");
  }
  Listening list(kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
  first_.setSilent(false);
  EXPECT_TRUE(list.hears(1));  // without another request
  EXPECT_EQ(uids(), (Uids{"slow", "quick"}));
  EXPECT_EQ(silentServers(), "");
}

TEST_F(DeviceList, failsWhenADriverHasNoDescriptorLeftAndIsThereAgainLater) {
  const AudioObjectID one = listOne();
  first_.setExhausted(true);
  const auto list = address(kAudioHardwarePropertyDevices);
  UInt32 size = 0;
  EXPECT_EQ(AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &list, 0, nullptr, &size),
            kTolvaneExhaustedError);
  first_.setExhausted(false);
  EXPECT_EQ(deviceList(), std::vector<AudioObjectID>{one});
}

TEST_F(DeviceList, ofADriverThatHangsHoldsNoOtherQueryUp) {
  first_.setDevices({scriptedDevice("slow", 1, 1)});
  second_.setDevices({scriptedDevice("quick", 1, 1)});
  const auto both = deviceList();
  first_.listing.close();
  std::atomic<bool> listed{false};
  std::thread lister([&] {
    deviceList();
    listed = true;
  });
  ASSERT_TRUE(eventually([&] { return first_.listing.held() > 0; }));
  EXPECT_EQ(stringOf(both[0], kAudioObjectPropertyName), "Device slow");
  EXPECT_EQ(stringOf(both[1], kAudioObjectPropertyName), "Device quick");
  EXPECT_EQ(valueOf<UInt32>(both[1], kAudioDevicePropertyBufferFrameSize), 256U);
  lister.join();
}

TEST_F(DeviceList, isHeardOfWhenADriverTellsOfAChange) {
  const AudioObjectID one = listOne();
  Listening list(kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
  Listening life(one, kAudioDevicePropertyDeviceIsAlive);
  first_.setDevices({scriptedDevice("one", 2, 2), scriptedDevice("two", 2, 2)});
  first_.notify();
  EXPECT_TRUE(list.hears(1));
  EXPECT_EQ(life.count(), 0);
  first_.setDevices({scriptedDevice("two", 2, 2)});
  first_.notify();
  EXPECT_TRUE(list.hears(2));
  EXPECT_TRUE(life.hears(1));
  EXPECT_FALSE(alive(one));
  first_.setDevices({scriptedDevice("one", 2, 2), scriptedDevice("two", 2, 2)});
  first_.notify();
  EXPECT_TRUE(list.hears(3));
  EXPECT_TRUE(life.hears(2));
  EXPECT_TRUE(alive(one));
}

TEST_F(DeviceList, unchangedIsNotHeardOf) {
  const AudioObjectID one = listOne();
  Listening list(kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
  Listening rate(one, kAudioDevicePropertyNominalSampleRate);
  const int asked = first_.listings();
  first_.notify();
  ASSERT_TRUE(eventually([&] { return first_.listings() > asked; }));
  auto changed = scriptedDevice("one", 2, 2);
  changed.sampleRateHz = 96000.0;
  first_.setDevices({changed});
  first_.notify();
  EXPECT_TRUE(rate.hears(1));
  EXPECT_EQ(list.count(), 0);
  EXPECT_EQ(rate.count(), 1);
}

}  // namespace

}  // namespace tolvane::test
