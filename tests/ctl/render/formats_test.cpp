// The formats that tolvanectl render reads and writes.
#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;

constexpr PatchConnection kThru{0, 0, 1.0F, true};

class RenderFormats : public testing::Test {
 protected:
  Finished render(const std::vector<PatchConnection>& routes, const std::string& input,
                  std::vector<std::string> extra = {}) const {
    writePatch(folder_ / "patch.json", routes);
    std::vector<std::string> words = {"render", "--patch", folder_ / "patch.json"};
    words.insert(words.end(), extra.begin(), extra.end());
    words.insert(words.end(), {folder_ / input, folder_ / "out.wav"});
    return runProgram(words);
  }
  [[nodiscard]] Sound output() const { return readSound(folder_ / "out.wav"); }
  TemporaryFolder folder_;
};

TEST_F(RenderFormats, WritesAWavFileOfFloats) {
  writeSound(folder_ / "in.wav", {2, 22050, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {0.25F, -1.0F, 0.5F, 1.0F}});
  ASSERT_EQ(render({{0, 1, 1.0F, true}, {1, 0, 0.5F, true}}, "in.wav").status, 0);
  const std::string bytes = readBytes(folder_ / "out.wav");
  EXPECT_EQ(bytes.substr(0, 4), "RIFF");
  EXPECT_EQ(bytes.substr(8, 4), "WAVE");
  EXPECT_THAT(bytes, testing::Not(HasSubstr("PEAK")));
  const Sound sound = output();
  EXPECT_EQ(sound.format & SF_FORMAT_SUBMASK, SF_FORMAT_FLOAT);
  EXPECT_EQ(sound.sampleRateHz, 22050);
  EXPECT_EQ(sound.channels, 2);
  EXPECT_EQ(sound.samples, (std::vector<float>{-0.5F, 0.25F, 0.5F, 0.5F}));
}

TEST_F(RenderFormats, HasAsManyChannelsAsTheHighestRoutedOutput) {
  writeSound(folder_ / "in.wav", {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {0.5F}});
  ASSERT_EQ(render({kThru, {0, 4, 0.5F, true}, {0, 9, 1.0F, false}}, "in.wav").status, 0);
  EXPECT_EQ(output().channels, 5);
  EXPECT_EQ(output().samples, (std::vector<float>{0.5F, 0.0F, 0.0F, 0.0F, 0.25F}));
}

TEST_F(RenderFormats, RoutesBeyondTheFileAreSilentAndSaidToBe) {
  writeSound(folder_ / "in.wav", {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {0.5F}});
  const Finished run =
      render({{5, 0, 1.0F, true}, {0, 1, 1.0F, true}, {0, 7, 1.0F, true}}, "in.wav", {"--outputs", "3"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err,
            "tolvanectl: 1 route is silent: the file has only 1 input channel\n"
            "tolvanectl: 1 route is silent: the file has only 3 output channels\n");
  EXPECT_EQ(output().samples, (std::vector<float>{0.0F, 0.5F, 0.0F}));
}

TEST_F(RenderFormats, OnlyTheFirst64ActiveRoutesSound) {
  writeSound(folder_ / "in.wav", {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {0.5F}});
  std::vector<PatchConnection> routes(64, {0, 0, 0.125F, true});
  routes.insert(routes.begin(), {0, 0, 1.0F, false});
  routes.push_back({0, 2, 1.0F, true});
  const Finished run = render(routes, "in.wav");
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, HasSubstr("65 routes are active, but only the first 64 of them are heard"));
  EXPECT_EQ(output().samples, (std::vector<float>{4.0F}));
}

TEST_F(RenderFormats, KeepsSamplesBeyondOneAndThoseThatAreNoNumbers) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  writeSound(folder_ / "in.wav",
             {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {3.5F, -100.0F, kInfinity, -kInfinity, NAN}});
  ASSERT_EQ(render({kThru}, "in.wav").status, 0);
  const std::vector<float> samples = output().samples;
  EXPECT_EQ(std::vector<float>(samples.begin(), samples.begin() + 4),
            (std::vector<float>{3.5F, -100.0F, kInfinity, -kInfinity}));
  EXPECT_TRUE(std::isnan(samples[4]));
}

TEST_F(RenderFormats, AFileWithoutFramesGivesOne) {
  writeSound(folder_ / "in.wav", {2, 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_16, {}});
  ASSERT_EQ(render({kThru}, "in.wav").status, 0);
  EXPECT_EQ(output().frames(), 0U);
  EXPECT_EQ(output().channels, 1);
}

TEST_F(RenderFormats, SilenceOfAsManyChannelsAsAskedForWithoutARoute) {
  writeSound(folder_ / "in.wav", {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {0.5F, 0.5F}});
  ASSERT_EQ(render({}, "in.wav", {"--outputs", "3"}).status, 0);
  EXPECT_EQ(output().samples, std::vector<float>(6, 0.0F));
}

TEST_F(RenderFormats, A1024ChannelFile) {
  Sound wide{1024, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {}};
  for (int i = 0; i < 1024 * 33; ++i) wide.samples.push_back(static_cast<float>(i));
  writeSound(folder_ / "in.wav", wide);
  ASSERT_EQ(render({{1023, 1023, 1.0F, true}, {512, 0, 1.0F, true}}, "in.wav").status, 0);
  const Sound sound = output();
  ASSERT_EQ(sound.channels, 1024);
  for (std::size_t f = 0; f < 33; ++f) {
    EXPECT_EQ(sound.samples[f * 1024], static_cast<float>(f * 1024 + 512));
    EXPECT_EQ(sound.samples[f * 1024 + 1023], static_cast<float>(f * 1024 + 1023));
  }
}

TEST_F(RenderFormats, DrawsAProgressBarOnATerminalForLongFilesOnly) {
  writePatch(folder_ / "patch.json", {kThru});
  const auto errOf = [&](std::size_t seconds, bool terminal) {
    writeSound(folder_ / "in.wav",
               {1, 8000, SF_FORMAT_WAV | SF_FORMAT_PCM_16, std::vector<float>(8000 * seconds)});
    ChildProcess::Options options;
    options.terminalErr = terminal;
    const Finished run = runProgram(
        {"render", "--patch", folder_ / "patch.json", folder_ / "in.wav", folder_ / "out.wav"}, options);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "");
    return run.err;
  };
  EXPECT_THAT(errOf(60, true), HasSubstr("\r[" + std::string(40, '=') + "] 100 %"));
  EXPECT_EQ(errOf(59, true), "");
  EXPECT_EQ(errOf(60, false), "");
}

struct Format {
  const char* name;
  int format;
};

class RenderReads : public testing::TestWithParam<Format> {};

// Samples that are exact in each of the formats.
TEST_P(RenderReads, TheFormat) {
  const TemporaryFolder folder;
  Sound sound{3, 32000, GetParam().format, {}};
  for (int i = 0; i < 3 * 4000; ++i) sound.samples.push_back(static_cast<float>(i % 255 - 127) / 128.0F);
  writeSound(folder / "in", sound);
  writePatch(folder / "patch.json", {{0, 2, 1.0F, true}, {1, 1, 1.0F, true}, {2, 0, 1.0F, true}});
  const Finished run =
      runProgram({"render", "--patch", folder / "patch.json", folder / "in", folder / "out.wav"});
  ASSERT_EQ(run.status, 0) << run.err;
  const Sound output = readSound(folder / "out.wav");
  EXPECT_EQ(output.sampleRateHz, 32000);
  ASSERT_EQ(output.samples.size(), sound.samples.size());
  for (std::size_t i = 0; i < sound.samples.size(); i += 3) {
    ASSERT_EQ(output.samples[i], sound.samples[i + 2]) << i;
    ASSERT_EQ(output.samples[i + 1], sound.samples[i + 1]) << i;
    ASSERT_EQ(output.samples[i + 2], sound.samples[i]) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Files, RenderReads,
                         testing::Values(Format{"Wav8", SF_FORMAT_WAV | SF_FORMAT_PCM_U8},
                                         Format{"Wav16", SF_FORMAT_WAV | SF_FORMAT_PCM_16},
                                         Format{"Wav24", SF_FORMAT_WAV | SF_FORMAT_PCM_24},
                                         Format{"Wav32", SF_FORMAT_WAV | SF_FORMAT_PCM_32},
                                         Format{"WavDouble", SF_FORMAT_WAV | SF_FORMAT_DOUBLE},
                                         Format{"Rf64", SF_FORMAT_RF64 | SF_FORMAT_PCM_24},
                                         Format{"W64", SF_FORMAT_W64 | SF_FORMAT_FLOAT},
                                         Format{"Aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24},
                                         Format{"Caf", SF_FORMAT_CAF | SF_FORMAT_FLOAT},
                                         Format{"Au", SF_FORMAT_AU | SF_FORMAT_PCM_16},
                                         Format{"Flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24}),
                         [](const auto& file) { return std::string(file.param.name); });

}  // namespace
}  // namespace tolvane::test
