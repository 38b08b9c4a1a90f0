// The settings of a card that nobody uses, that another program holds, that runs, or that has gone.
#include <cerrno>

#include <gtest/gtest.h>

#include "hal/alsa/alsa_driver.h"
#include "hal/alsa/library.h"

namespace tolvane::hal::alsa {
namespace {

bool isThere = true;
bool isHeld = false;

/// libasound on a machine with one card, whose PCMs are the null plug-in's.
Library oneCard() {
  Library alsa = *library();
  alsa.snd_card_next = [](int* index) {
    *index = isThere && *index < 0 ? 31 : -1;
    return 0;
  };
  alsa.snd_ctl_open = [](snd_ctl_t** control, const char* /*name*/, int /*mode*/) {
    *control = nullptr;
    return 0;
  };
  alsa.snd_ctl_card_info = [](snd_ctl_t* /*control*/, snd_ctl_card_info_t* /*info*/) { return 0; };
  alsa.snd_ctl_card_info_get_id = [](const snd_ctl_card_info_t* /*info*/) { return "Card"; };
  alsa.snd_ctl_card_info_get_name = [](const snd_ctl_card_info_t* /*info*/) { return "A card"; };
  alsa.snd_ctl_pcm_next_device = [](snd_ctl_t* /*control*/, int* device) {
    *device = *device < 0 ? 0 : -1;
    return 0;
  };
  alsa.snd_ctl_pcm_info = [](snd_ctl_t* /*control*/, snd_pcm_info_t* /*info*/) { return 0; };
  alsa.snd_pcm_open = [](snd_pcm_t** pcm, const char* /*name*/, snd_pcm_stream_t stream, int mode) {
    return isHeld ? -EBUSY : library()->snd_pcm_open(pcm, "null", stream, mode);
  };
  return alsa;
}

class DeafClient final : public SessionClient {
 public:
  void cycle(const IoCycle& /*cycle*/) noexcept override {}
  void overload() noexcept override {}
  void aliveChanged(bool /*isAlive*/) noexcept override {}
  void formatChanged(double /*rateHz*/, std::uint32_t /*frames*/) noexcept override {}
};

class AlsaSettings : public testing::Test {
 protected:
  AlsaSettings() {
    isThere = true;
    isHeld = false;
  }

  [[nodiscard]] DeviceInfo card() const { return driver_->devices().at(0); }

  const Library alsa_ = oneCard();
  const std::unique_ptr<Driver> driver_ = makeAlsaDriver(alsa_);
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
  DeafClient client;
  const StartResult started = driver_->start(before, client);
  ASSERT_EQ(started.status, noErr);
  EXPECT_EQ(driver_->setSampleRate(before, 96000.0), OSStatus{kAudioHardwareUnsupportedOperationError});
  EXPECT_EQ(driver_->setPeriods(before, 4), OSStatus{kAudioHardwareUnsupportedOperationError});
  EXPECT_EQ(card().sampleRateHz, 48000.0);
  EXPECT_EQ(card().periods, 3U);
}

TEST_F(AlsaSettings, CannotBeSetWhileAnotherProgramHoldsTheCard) {
  const DeviceInfo before = card();
  isHeld = true;
  EXPECT_EQ(driver_->setBufferFrames(before, 1024), OSStatus{kAudioDevicePermissionsError});
  EXPECT_EQ(driver_->setSampleRate(before, 96000.0), OSStatus{kAudioDevicePermissionsError});
  EXPECT_EQ(driver_->setPeriods(before, 4), OSStatus{kAudioDevicePermissionsError});
  EXPECT_EQ(card(), before);
  isHeld = false;
  EXPECT_EQ(card(), before);
}

TEST_F(AlsaSettings, CannotBeSetOnceTheCardHasGone) {
  const DeviceInfo before = card();
  isThere = false;
  EXPECT_EQ(driver_->setBufferFrames(before, 1024), OSStatus{kAudioHardwareBadDeviceError});
  EXPECT_EQ(driver_->setSampleRate(before, 96000.0), OSStatus{kAudioHardwareBadDeviceError});
}

}  // namespace
}  // namespace tolvane::hal::alsa
