// The drivers are asked for their devices before the first list is read.
#include "hal/driver/time_limits.h"
#include "hal/registry/scripted_hal_test.h"

namespace tolvane::test {

namespace {

constexpr UInt32 kBegin = 1;

OSStatus prefetch(UInt32 size = sizeof kBegin) {
  const auto where = address(kTolvanePropertyPrefetch);
  return AudioObjectSetPropertyData(kAudioObjectSystemObject, &where, 0, nullptr, size, &kBegin);
}

class Prefetch : public ScriptedHal {};

TEST_F(Prefetch, asksEveryDriver) {
  EXPECT_EQ(prefetch(), noErr);
  EXPECT_TRUE(eventually([&] { return first_.listings() == 1 && second_.listings() == 1; }));
}

TEST_F(Prefetch, isNoChangeOfTheList) {
  Listening list(kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
  first_.setDevices({scriptedDevice("one", 2, 2)});
  EXPECT_EQ(prefetch(), noErr);
  EXPECT_TRUE(eventually([&] { return first_.listings() == 1; }));
  EXPECT_EQ(deviceList().size(), 1U);
  EXPECT_EQ(list.count(), 0);
}

TEST_F(Prefetch, doesNotWaitForADriver) {
  first_.setDevices({scriptedDevice("one", 2, 2)});
  first_.listing.close();
  EXPECT_EQ(prefetch(), noErr);
  EXPECT_TRUE(eventually([&] { return first_.listing.held() == 1; }));
  first_.listing.open();
  EXPECT_EQ(deviceList().size(), 1U);
}

TEST_F(Prefetch, leavesTheFirstListItsTime) {
  first_.setDevices({scriptedDevice("one", 2, 2)});
  first_.setListingTime(hal::kListLimit + std::chrono::milliseconds(50));
  EXPECT_EQ(prefetch(), noErr);
  ASSERT_TRUE(eventually([&] { return first_.listings() == 1; }));
  EXPECT_EQ(deviceList().size(), 1U);
}

TEST_F(Prefetch, takesFourBytesAndCannotBeRead) {
  EXPECT_EQ(prefetch(8), OSStatus{kAudioHardwareBadPropertySizeError});
  EXPECT_EQ(prefetch(0), OSStatus{kAudioHardwareBadPropertySizeError});
  const auto where = address(kTolvanePropertyPrefetch);
  UInt32 value = 0;
  UInt32 size = sizeof value;
  EXPECT_EQ(AudioObjectGetPropertyData(kAudioObjectSystemObject, &where, 0, nullptr, &size, &value),
            OSStatus{kAudioHardwareUnsupportedOperationError});
}

}  // namespace

}  // namespace tolvane::test
