// A card's two directions on libasound's own plug-ins. No clock paces these, so the tests check settings and
// samples, not times.
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "hal/alsa/duplex.h"

namespace tolvane::hal::alsa {
namespace {

std::unique_ptr<Duplex> opened(const PcmNames& names) {
  std::unique_ptr<Duplex> duplex;
  EXPECT_EQ(Duplex::open(*library(), names, duplex), 0);
  return duplex;
}

TEST(NullPcm, OffersTheRateThePeriodAndTheMostChannels) {
  const auto duplex = opened({"null", "null"});
  ASSERT_TRUE(duplex);
  DuplexOffer offer;
  ASSERT_EQ(duplex->inspect({}, offer), 0);
  const DuplexFormat& format = offer.format;
  EXPECT_EQ(format.rateHz, 48000U);
  EXPECT_EQ(format.periodFrames, 256U);
  EXPECT_EQ(format.inputChannels, 1024U);
  EXPECT_EQ(format.outputChannels, 1024U);
  EXPECT_EQ(format.maxPeriodFrames, 8192U);
}

TEST(NullPcm, TakesWhatIsWished) {
  const auto duplex = opened({"null", "null"});
  ASSERT_TRUE(duplex);
  ASSERT_EQ(duplex->configure({18, 20, {.periodFrames = 1024}}), 0);
  EXPECT_EQ(duplex->format().periodFrames, 1024U);
  EXPECT_EQ(duplex->outputBufferFrames(), 3072U);
  EXPECT_EQ(duplex->input().mNumberBuffers, 18U);
  EXPECT_EQ(duplex->output().mNumberBuffers, 20U);
  ASSERT_EQ(duplex->configure({2, 2, {.periodFrames = 64}}), 0);
  EXPECT_EQ(duplex->format().periodFrames, 64U);
  EXPECT_EQ(duplex->input().mBuffers[0].mDataByteSize, 256U);
}

TEST(NullPcm, OneDirectionAlone) {
  const auto capture = opened({"null", ""});
  ASSERT_TRUE(capture);
  ASSERT_EQ(capture->configure({4, 0, {.periodFrames = 256}}), 0);
  EXPECT_EQ(capture->input().mNumberBuffers, 4U);
  EXPECT_EQ(capture->output().mNumberBuffers, 0U);
  const auto playback = opened({"", "null"});
  ASSERT_TRUE(playback);
  ASSERT_EQ(playback->configure({0, 4, {.periodFrames = 256}}), 0);
  EXPECT_EQ(playback->input().mNumberBuffers, 0U);
  EXPECT_EQ(playback->output().mNumberBuffers, 4U);
}

TEST(NullPcm, OpeningWhatIsNotThereSaysSo) {
  std::unique_ptr<Duplex> duplex;
  EXPECT_EQ(Duplex::open(*library(), {"hw:CARD=NoSuch,DEV=0", "null"}, duplex), -ENODEV);
  EXPECT_FALSE(duplex);
  EXPECT_EQ(Duplex::open(*library(), {"null", "no_such_pcm"}, duplex), -ENOENT);
  EXPECT_FALSE(duplex);
  EXPECT_EQ(Duplex::open(*library(), {"", ""}, duplex), -ENOENT);
  EXPECT_FALSE(duplex);
}

/// One period's samples in a file, after the initial silence.
TEST(FilePcm, WritesSilenceAndThenThePeriodsInterleaved) {
  std::string file = (std::filesystem::temp_directory_path() / "tolvane-pcm-XXXXXX").string();
  close(mkstemp(file.data()));
  {
    const auto duplex = opened({"", "file:'" + file + "',raw"});
    ASSERT_TRUE(duplex);
    ASSERT_EQ(duplex->configure({0, 2, {.periodFrames = 64}}), 0);
    ASSERT_EQ(duplex->start(), 0);
    for (int f = 0; f < 64; ++f) {
      for (int c = 0; c < 2; ++c) {
        static_cast<float*>(duplex->output().mBuffers[c].mData)[f] = static_cast<float>(1000 * c + f);
      }
    }
    ASSERT_EQ(duplex->write(), 0);
    duplex->stop();
  }
  const auto bytes = std::filesystem::file_size(file);
  std::vector<float> samples(bytes / sizeof(float));
  std::ifstream(file, std::ios::binary).read(reinterpret_cast<char*>(samples.data()), std::streamsize(bytes));
  std::filesystem::remove(file);
  const std::size_t silent = 2 * 3 * 64;
  ASSERT_EQ(samples.size(), silent + 128);
  for (std::size_t s = 0; s < silent; ++s) ASSERT_EQ(samples[s], 0.0F);
  for (std::size_t s = 0; s < 128; ++s) {
    ASSERT_EQ(samples[silent + s], static_cast<float>(1000 * (s % 2) + s / 2));
  }
}

}  // namespace
}  // namespace tolvane::hal::alsa
