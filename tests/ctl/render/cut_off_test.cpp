// tolvanectl render of cut-off recordings: an error and no file, unless --partial is given.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr int kCutChannels = 2;
constexpr std::size_t kCutFrames = 30000;

struct CutFormat {
  const char* name;
  int format;
  std::size_t frameBytes;  // 0: varies
};

class RenderCutOff : public testing::Test {
 protected:
  RenderCutOff() { writePatch(folder_ / "patch.json", {{0, 1, 1.0F, true}, {1, 0, 1.0F, true}}); }

  static Sound recording(int format) {
    Sound sound{kCutChannels, 48000, format, {}};
    for (std::size_t s = 0; s < kCutFrames * kCutChannels; ++s)
      sound.samples.push_back(static_cast<float>(s * 7919 % 251) / 256.0F - 0.5F);
    return sound;
  }
  /// Writes the recording without its last `missingBytes` bytes as the file "in".
  void writeCut(int format, std::size_t missingBytes) const {
    writeSound(folder_ / "whole", recording(format));
    const std::string whole = readBytes(folder_ / "whole");
    writeText(folder_ / "in", whole.substr(0, whole.size() - missingBytes));
    ASSERT_EQ(runShell("rm " + (folder_ / "whole")), 0);
  }
  [[nodiscard]] std::vector<std::string> words(const std::string& input) const {
    return {"render", "--patch", folder_ / "patch.json", input, folder_ / "out.wav"};
  }
  [[nodiscard]] Finished render(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> all = words(folder_ / "in");
    all.insert(all.end(), options.begin(), options.end());
    return runProgram(all);
  }
  void expectNoFile() const { EXPECT_THAT(folder_.names(), ElementsAre("in", "patch.json")); }
  /// Expects the output to be the rendering of the recording's first `frames` frames.
  void expectFrames(std::size_t frames, int format) const {
    const Sound whole = recording(format);
    const Sound output = readSound(folder_ / "out.wav");
    ASSERT_EQ(output.frames(), frames);
    for (std::size_t f = 0; f < frames; ++f) {
      ASSERT_EQ(output.samples[2 * f], whole.samples[2 * f + 1]) << "frame " << f;
      ASSERT_EQ(output.samples[2 * f + 1], whole.samples[2 * f]) << "frame " << f;
    }
  }
  /// Like render(), but reads the recording from a pipe.
  [[nodiscard]] Finished renderPiped(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> all = words("-");
    all.insert(all.end(), options.begin(), options.end());
    ChildProcess child(all);
    child.write(readBytes(folder_ / "in"));
    return child.finish();
  }

  TemporaryFolder folder_;
};

class RenderCutOffFormat : public RenderCutOff, public testing::WithParamInterface<CutFormat> {};

TEST_P(RenderCutOffFormat, SaysWhatWasPromisedAndWhatIsThere) {
  const std::size_t frameBytes = GetParam().frameBytes;
  writeCut(GetParam().format, 10000 * frameBytes);
  const Finished run = render();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: " + (folder_ / "in") + ": is cut off: only " +
                         std::to_string(20000 * frameBytes) + " of " +
                         std::to_string(kCutFrames * frameBytes) +
                         " bytes of sound are there; --partial renders what is there\n");
  expectNoFile();
}

TEST_P(RenderCutOffFormat, IsRenderedAsFarAsItGoesWhenThatIsAskedFor) {
  writeCut(GetParam().format, 10000 * GetParam().frameBytes + 1);  // the cut is within a frame
  const Finished run = render({"--partial"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, HasSubstr("/in: is cut off: only "));
  EXPECT_THAT(run.err, testing::Not(HasSubstr("--partial")));
  expectFrames(19999, GetParam().format);
}

TEST_P(RenderCutOffFormat, MayLackEverySample) {
  writeCut(GetParam().format, kCutFrames * GetParam().frameBytes);
  const Finished run = render();
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr(": is cut off: only 0 of "));
  expectNoFile();
}

TEST_P(RenderCutOffFormat, IsNotOneThatIsWhole) {
  writeCut(GetParam().format, 0);
  const Finished run = render();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  expectFrames(kCutFrames, GetParam().format);
}

INSTANTIATE_TEST_SUITE_P(Files, RenderCutOffFormat,
                         testing::Values(CutFormat{"Wav16", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 4},
                                         CutFormat{"Wav24", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 6},
                                         CutFormat{"WavBig", SF_FORMAT_WAV | SF_FORMAT_PCM_16 | SF_ENDIAN_BIG,
                                                   4},
                                         CutFormat{"Wavex", SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 4},
                                         CutFormat{"Rf64", SF_FORMAT_RF64 | SF_FORMAT_PCM_24, 6},
                                         CutFormat{"W64", SF_FORMAT_W64 | SF_FORMAT_PCM_16, 4},
                                         CutFormat{"Aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24, 6},
                                         CutFormat{"AiffFloat", SF_FORMAT_AIFF | SF_FORMAT_FLOAT, 8},
                                         CutFormat{"Au", SF_FORMAT_AU | SF_FORMAT_PCM_16, 4}),
                         [](const auto& file) { return std::string(file.param.name); });

class RenderCutOffOgg : public RenderCutOff {
 protected:
  static constexpr int kOgg = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
};

TEST_F(RenderCutOffOgg, SaysThatTheLastPageIsMissing) {
  writeCut(kOgg, 5000);
  const Finished run = render();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: " + (folder_ / "in") +
                         ": is cut off: the last page of its Ogg stream is not there; --partial renders what "
                         "is there\n");
  expectNoFile();
}

TEST_F(RenderCutOffOgg, IsRenderedAsFarAsItGoesWhenThatIsAskedFor) {
  writeCut(kOgg, 5000);
  const Finished run = render({"--partial"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "tolvanectl: " + (folder_ / "in") +
                         ": is cut off: the last page of its Ogg stream is not there\n");
  const std::size_t frames = readSound(folder_ / "out.wav").frames();
  EXPECT_GT(frames, 0U);
  EXPECT_LT(frames, kCutFrames);
}

TEST_F(RenderCutOffOgg, IsNotOneThatIsWhole) {
  writeCut(kOgg, 0);
  const Finished run = render();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(readSound(folder_ / "out.wav").frames(), kCutFrames);
}

TEST_F(RenderCutOffOgg, LacksOneByteOfItsLastPage) {
  writeCut(kOgg, 1);
  EXPECT_EQ(render().status, 1);
  expectNoFile();
}

class RenderCutOffPipe : public RenderCutOff {
 protected:
  static constexpr int kWav = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

  /// Writes a 4-byte little-endian size into "in".
  void setSize(std::size_t offset, std::uint32_t size) const {
    std::string bytes = readBytes(folder_ / "in");
    for (std::size_t i = 0; i < 4; ++i) bytes[offset + i] = static_cast<char>(size >> 8 * i & 0xFFU);
    writeText(folder_ / "in", bytes);
  }
};

TEST_F(RenderCutOffPipe, SaysWhatWasPromisedAndWhatCame) {
  writeCut(kWav, 40000);
  const Finished run = renderPiped();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(
      run.err,
      "tolvanectl: -: is cut off: only 20000 of 30000 frames are there; --partial renders what is there\n");
  expectNoFile();
}

TEST_F(RenderCutOffPipe, IsRenderedAsFarAsItGoesWhenThatIsAskedFor) {
  writeCut(kWav, 40000);
  const Finished run = renderPiped({"--partial"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "tolvanectl: -: is cut off: only 20000 of 30000 frames are there\n");
  expectFrames(20000, kWav);
}

// A program that writes to a pipe cannot seek back to fill in the size, and leaves one of these.
TEST_F(RenderCutOffPipe, PromisesNothingWithASizeThatStandsForAnyLength) {
  for (const std::uint32_t size : {0xFFFFFFFFU, 0x7FFFF000U, 0x80000000U, 0x7FFFFF00U}) {
    writeCut(kWav, 0);
    setSize(4, size);
    setSize(40, size);
    for (const Finished& run : {render(), renderPiped()}) {
      EXPECT_EQ(run.status, 0) << size;
      EXPECT_EQ(run.err, "") << size;
      expectFrames(kCutFrames, kWav);
    }
  }
}

/// A recording of three frames of one byte. A byte pads its sound to an even size, and may be missing.
class RenderCutOffOddPipe : public RenderCutOffPipe {
 protected:
  RenderCutOffOddPipe() { writePatch(folder_ / "patch.json", {{0, 0, 1.0F, true}}); }

  /// Writes the recording up to the first `soundBytes` bytes of its sound as the file "in".
  void writeUpTo(std::size_t soundBytes) const {
    writeSound(folder_ / "in", {1, 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_U8, {0.5F, 0.25F, -0.5F}});
    const std::string bytes = readBytes(folder_ / "in");
    writeText(folder_ / "in", bytes.substr(0, bytes.find("data") + 8 + soundBytes));
  }
};

TEST_F(RenderCutOffOddPipe, IsNotOneThatLacksOnlyThePadByte) {
  writeUpTo(3);
  for (const Finished& run : {render(), renderPiped()}) {
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
  }
}

TEST_F(RenderCutOffOddPipe, LacksItsLastFrame) {
  writeUpTo(2);
  const Finished run = renderPiped();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "tolvanectl: -: is cut off: only 2 of 3 frames are there; --partial renders what is there\n");
  expectNoFile();
}

TEST_F(RenderCutOff, ACutFlacIsRenderedAsFarAsItGoesWhenThatIsAskedFor) {
  Sound noise{1, 48000, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, {}};
  for (std::uint32_t s = 0; s < 200000; ++s)
    noise.samples.push_back(static_cast<float>(s * 7919 % 65536) / 32768.0F - 1.0F);
  writeSound(folder_ / "in", noise);
  const std::string whole = readBytes(folder_ / "in");
  writeText(folder_ / "in", whole.substr(0, whole.size() / 2));
  writePatch(folder_ / "patch.json", {{0, 0, 1.0F, true}});
  const Finished run = render({"--partial"});
  EXPECT_EQ(run.status, 0) << run.err;
  const Sound output = readSound(folder_ / "out.wav");
  ASSERT_GT(output.frames(), 10000U);
  ASSERT_LT(output.frames(), 200000U);
  EXPECT_THAT(run.err, HasSubstr(": is cut off: only " + std::to_string(output.frames()) +
                                 " of 200000 frames are there\n"));
  for (std::size_t f = 0; f < output.frames(); ++f) ASSERT_EQ(output.samples[f], noise.samples[f]) << f;
}

}  // namespace
}  // namespace tolvane::test
