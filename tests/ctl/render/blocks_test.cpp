// tolvanectl render of recordings much longer than its blocks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

constexpr int kChannels = 3;
constexpr std::size_t kFrames = 700'001;  // 8 megabytes; no multiple of a block or cycle

/// Every sample is a different integer, so half of it is exact.
Sound longRecording() {
  Sound sound{kChannels, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {}};
  for (std::size_t s = 0; s < kFrames * kChannels; ++s) sound.samples.push_back(static_cast<float>(s + 1));
  return sound;
}

class RenderBlocks : public testing::Test {
 protected:
  RenderBlocks() {
    writePatch(folder_ / "patch.json", {{2, 0, 1.0F, true}, {0, 1, 0.5F, true}});
    writeSound(folder_ / "in.wav", recording_);
  }
  [[nodiscard]] std::vector<std::string> words(const std::string& input) const {
    return {"render", "--patch", folder_ / "patch.json", input, folder_ / "out.wav"};
  }
  void expectTheWholeRecording() const {
    const Sound output = readSound(folder_ / "out.wav");
    ASSERT_EQ(output.channels, 2);
    ASSERT_EQ(output.frames(), kFrames);
    for (std::size_t f = 0; f < kFrames; ++f) {
      ASSERT_EQ(output.samples[2 * f], recording_.samples[kChannels * f + 2]) << "frame " << f;
      ASSERT_EQ(output.samples[2 * f + 1], recording_.samples[kChannels * f] * 0.5F) << "frame " << f;
    }
  }

  const Sound recording_ = longRecording();
  TemporaryFolder folder_;
};

TEST_F(RenderBlocks, ComeOutWholeAndInOrder) {
  const Finished run = runProgram(words(folder_ / "in.wav"));
  ASSERT_EQ(run.status, 0) << run.err;
  expectTheWholeRecording();
}

TEST_F(RenderBlocks, ComeOutWholeAndInOrderFromASlowSource) {
  ChildProcess child(words("-"));
  const std::string bytes = readBytes(folder_ / "in.wav");
  constexpr std::size_t kPiece = 300'007;
  for (std::size_t at = 0; at < bytes.size(); at += kPiece) child.write(bytes.substr(at, kPiece));
  const Finished run = child.finish();
  ASSERT_EQ(run.status, 0) << run.err;
  expectTheWholeRecording();
}

// The reader is some blocks ahead when writing fails.
TEST_F(RenderBlocks, EndWithTheDiskFullHalfWay) {
  ChildProcess::Options options;
  options.limits = {{RLIMIT_FSIZE, kFrames * 2 * sizeof(float) / 2}};  // like a full disk
  const Finished run = runProgram(words(folder_ / "in.wav"), options);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, StartsWith("tolvanectl: " + (folder_ / "out.wav") + ": "));
  EXPECT_THAT(folder_.names(), ElementsAre("in.wav", "patch.json"));
}

// The writer is some blocks behind when reading fails.
TEST_F(RenderBlocks, EndWithTheRecordingCutOffHalfWay) {
  Sound noise{kChannels, 48000, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, {}};
  for (std::uint32_t s = 0; s < kFrames * kChannels; ++s)
    noise.samples.push_back(static_cast<float>(s * 7919 % 65536) / 65536.0F - 0.5F);
  writeSound(folder_ / "in.flac", noise);
  const std::string whole = readBytes(folder_ / "in.flac");
  writeText(folder_ / "in.flac", whole.substr(0, whole.size() / 2));
  const Finished run = runProgram(words(folder_ / "in.flac"));
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, StartsWith("tolvanectl: " + (folder_ / "in.flac") + ": "));
  EXPECT_THAT(folder_.names(), ElementsAre("in.flac", "in.wav", "patch.json"));
}

}  // namespace
}  // namespace tolvane::test
