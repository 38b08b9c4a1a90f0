// What is chosen of what a card can do, where its abilities depend on each other.
#include "hal/alsa/negotiation.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "hal/alsa/scripted_hardware.h"

namespace tolvane::hal::alsa {
namespace {

using test::Hardware;

constexpr auto kFloat = SND_PCM_FORMAT_FLOAT_LE;
constexpr auto k32 = SND_PCM_FORMAT_S32_LE;
constexpr auto k24Packed = SND_PCM_FORMAT_S24_3LE;
constexpr auto k20Packed = SND_PCM_FORMAT_S20_3LE;
constexpr auto k16 = SND_PCM_FORMAT_S16_LE;

class Negotiation : public testing::Test {
 protected:
  /// Negotiates for a card with outputs only and sets it up.
  int settle(Hardware& playback, const CardSettings& settings = {}, unsigned channels = 0) {
    HwParams space(alsa_, playback.pcm());
    const int error = negotiate(nullptr, &space, {0, channels, settings}, offer_);
    if (error < 0) return error;
    format_ = offer_.format;
    PcmSetup setup;
    EXPECT_EQ(space.install(format_.periodFrames, format_.periods, setup), 0);
    return 0;
  }

  int settleBoth(Hardware& capture, Hardware& playback, const CardSettings& settings = {}) {
    HwParams captureSpace(alsa_, capture.pcm());
    HwParams playbackSpace(alsa_, playback.pcm());
    const int error = negotiate(&captureSpace, &playbackSpace, {0, 0, settings}, offer_);
    if (error == 0) format_ = offer_.format;
    return error;
  }

  const Library alsa_ = test::libraryForHardware();
  DuplexOffer offer_;
  DuplexFormat format_;
};

TEST_F(Negotiation, ChannelsComeBeforeThePrecisionOfSamples) {
  Hardware card{.modes = {{kFloat, 2, 48000}, {k24Packed, 8, 48000}, {k16, 8, 48000}}};
  ASSERT_EQ(settle(card), 0);
  EXPECT_EQ(format_.outputChannels, 8U);
  EXPECT_EQ(card.installed.format, k24Packed);
}

TEST_F(Negotiation, TheRateComesBeforeThePrecisionOfSamples) {
  Hardware card{.modes = {{k32, 2, 96000}, {k16, 2, 48000}}};
  ASSERT_EQ(settle(card), 0);
  EXPECT_EQ(format_.rateHz, 48000U);
  EXPECT_EQ(card.installed.format, k16);
}

TEST_F(Negotiation, TheMostPreciseFormatIsTakenOfThoseThatAreLeft) {
  Hardware card{.modes = {{k16, 2, 48000}, {k20Packed, 2, 48000}, {k24Packed, 2, 48000}, {k32, 2, 48000}}};
  ASSERT_EQ(settle(card), 0);
  EXPECT_EQ(card.installed.format, k32);
}

TEST_F(Negotiation, TwentyBitsInThreeBytesComeBeforeSixteen) {
  Hardware card{.modes = {{k16, 2, 48000}, {k20Packed, 2, 48000}}};
  ASSERT_EQ(settle(card), 0);
  EXPECT_EQ(card.installed.format, k20Packed);
}

TEST_F(Negotiation, AFormatThatNobodyKnowsIsNotTaken) {
  Hardware card{.modes = {{SND_PCM_FORMAT_S24_BE, 2, 48000}}};
  EXPECT_EQ(settle(card), -EINVAL);
}

TEST_F(Negotiation, ChannelsThatComeOnlyInAFormatThatNobodyKnowsAreNotCounted) {
  Hardware card{.modes = {{SND_PCM_FORMAT_S24_BE, 8, 48000}, {k16, 4, 48000}}};
  ASSERT_EQ(settle(card), 0);
  EXPECT_EQ(format_.outputChannels, 4U);
  EXPECT_EQ(card.installed.format, k16);
}

TEST_F(Negotiation, TheRateAskedForIsTaken) {
  Hardware card{.modes = {{k32, 8, 48000}, {k32, 4, 96000}, {k32, 2, 192000}}};
  ASSERT_EQ(settle(card, {.rateHz = 96000}), 0);
  EXPECT_EQ(format_.rateHz, 96000U);
  EXPECT_EQ(format_.outputChannels, 4U);
  ASSERT_EQ(settle(card, {.rateHz = 192000}), 0);
  EXPECT_EQ(format_.outputChannels, 2U);
}

TEST_F(Negotiation, OfARateThatTheCardLacksTheNearestIsTaken) {
  Hardware card{.modes = {{k32, 2, 44100}, {k32, 2, 88200}}};
  ASSERT_EQ(settle(card), 0);
  EXPECT_EQ(format_.rateHz, 44100U);
  ASSERT_EQ(settle(card, {.rateHz = 96000}), 0);
  EXPECT_EQ(format_.rateHz, 88200U);
}

TEST_F(Negotiation, TheRatesOfBothDirectionsAreOffered) {
  Hardware inputs{.modes = {{k32, 2, 44100}, {k32, 2, 48000}, {k32, 2, 96000}}};
  Hardware outputs{.modes = {{k32, 2, 48000}, {k32, 2, 96000}, {k32, 2, 192000}}};
  ASSERT_EQ(settleBoth(inputs, outputs), 0);
  EXPECT_EQ(offer_.ratesHz, (std::vector<unsigned>{48000, 96000}));
}

TEST_F(Negotiation, AnUnusualRateIsOfferedIfItIsTheOnlyOne) {
  Hardware card{.modes = {{k16, 1, 47952}}};
  ASSERT_EQ(settle(card), 0);
  EXPECT_EQ(format_.rateHz, 47952U);
  EXPECT_EQ(offer_.ratesHz, (std::vector<unsigned>{47952}));
}

TEST_F(Negotiation, TheNumberOfPeriodsAskedForIsTaken) {
  Hardware card{.modes = {{k32, 2, 48000}}};
  ASSERT_EQ(settle(card), 0);
  EXPECT_EQ(format_.periods, 3U);
  EXPECT_EQ(format_.minPeriods, 2U);
  EXPECT_EQ(format_.maxPeriods, 16U);
  ASSERT_EQ(settle(card, {.periods = 2}), 0);
  EXPECT_EQ(format_.periods, 2U);
  EXPECT_EQ(card.installedPeriods, 2U);
}

TEST_F(Negotiation, TheNumberOfPeriodsIsOneThatBothDirectionsCanHave) {
  Hardware inputs{.modes = {{k32, 2, 48000}}, .minPeriods = 1, .maxPeriods = 8};
  Hardware outputs{.modes = {{k32, 2, 48000}}, .minPeriods = 4, .maxPeriods = 32};
  ASSERT_EQ(settleBoth(inputs, outputs), 0);
  EXPECT_EQ(format_.periods, 4U);
  EXPECT_EQ(format_.minPeriods, 4U);
  EXPECT_EQ(format_.maxPeriods, 8U);
  ASSERT_EQ(settleBoth(inputs, outputs, {.periods = 12}), 0);
  EXPECT_EQ(format_.periods, 8U);
}

TEST_F(Negotiation, OnePeriodIsTooFew) {
  Hardware card{.modes = {{k32, 2, 48000}}, .minPeriods = 1, .maxPeriods = 1};
  EXPECT_EQ(settle(card), -EINVAL);
}

}  // namespace
}  // namespace tolvane::hal::alsa
