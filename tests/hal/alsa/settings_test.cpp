// The settings of a card that nobody uses, that another program holds, that runs, or that has gone.
#include <gtest/gtest.h>

#include "hal/alsa/one_card.h"
#include "support/eventually.h"

namespace tolvane::hal::alsa {
namespace {

class AlsaSettings : public testing::Test {
 protected:
  [[nodiscard]] DeviceInfo card() const { return machine_.card(); }

  test::OneCard machine_;
  Driver* const driver_ = &machine_.driver();
};

TEST_F(AlsaSettings, AreSetOnACardThatNobodyUses) {
  ASSERT_EQ(card().bufferFrames, 256U);
  ASSERT_EQ(card().sampleRateHz, 48000.0);
  ASSERT_EQ(card().periods, 3U);
  EXPECT_EQ(driver_->setBufferFrames(card(), 1024), noErr);
  EXPECT_EQ(driver_->setSampleRate(card(), 96000.0), noErr);
  EXPECT_EQ(driver_->setPeriods(card(), 4), noErr);
  EXPECT_EQ(card().bufferFrames, 1024U);
  EXPECT_EQ(card().sampleRateHz, 96000.0);
  EXPECT_EQ(card().periods, 4U);
}

TEST_F(AlsaSettings, OfRateAndPeriodsStayWhileTheCardRuns) {
  const DeviceInfo before = card();
  test::DeafClient client;
  const StartResult started = driver_->start(before, client);
  ASSERT_EQ(started.status, noErr);
  EXPECT_EQ(driver_->setSampleRate(before, 96000.0), OSStatus{kAudioHardwareUnsupportedOperationError});
  EXPECT_EQ(driver_->setPeriods(before, 4), OSStatus{kAudioHardwareUnsupportedOperationError});
  EXPECT_EQ(card().sampleRateHz, 48000.0);
  EXPECT_EQ(card().periods, 3U);
}

TEST_F(AlsaSettings, TheMemoryOfASessionIsLocked) {
  test::DeafClient client;
  const StartResult started = driver_->start(card(), client);
  ASSERT_EQ(started.status, noErr);
  EXPECT_TRUE(test::eventually([&] { return client.locked.load(); }));
}

TEST_F(AlsaSettings, CannotBeSetWhileAnotherProgramHoldsTheCard) {
  const DeviceInfo before = card();
  machine_.isHeld = true;
  EXPECT_EQ(driver_->setBufferFrames(before, 1024), OSStatus{kAudioDevicePermissionsError});
  EXPECT_EQ(driver_->setSampleRate(before, 96000.0), OSStatus{kAudioDevicePermissionsError});
  EXPECT_EQ(driver_->setPeriods(before, 4), OSStatus{kAudioDevicePermissionsError});
  EXPECT_EQ(card(), before);
  machine_.isHeld = false;
  EXPECT_EQ(card(), before);
}

TEST_F(AlsaSettings, CannotBeSetOnceTheCardHasGone) {
  const DeviceInfo before = card();
  machine_.isThere = false;
  EXPECT_EQ(driver_->setBufferFrames(before, 1024), OSStatus{kAudioHardwareBadDeviceError});
  EXPECT_EQ(driver_->setSampleRate(before, 96000.0), OSStatus{kAudioHardwareBadDeviceError});
}

}  // namespace
}  // namespace tolvane::hal::alsa
