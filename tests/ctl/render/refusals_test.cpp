// tolvanectl render refuses with a clear message and leaves no file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class RenderRefuses : public testing::Test {
 protected:
  RenderRefuses() {
    writePatch(folder_ / "patch.json", {{0, 0, 1.0F, true}});
    writeSound(folder_ / "in.wav",
               {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, std::vector<float>(20000, 0.5F)});
  }
  [[nodiscard]] Finished render(const std::string& patch, const std::string& input,
                                const std::string& output) const {
    return runProgram({"render", "--patch", folder_ / patch, folder_ / input, folder_ / output});
  }
  TemporaryFolder folder_;
};

TEST_F(RenderRefuses, ToReplaceTheRecording) {
  const std::string before = readBytes(folder_ / "in.wav");
  ASSERT_EQ(runShell("ln " + (folder_ / "in.wav") + " " + (folder_ / "hard.wav")), 0);
  ASSERT_EQ(runShell("ln -s in.wav " + (folder_ / "soft.wav")), 0);
  for (const char* same : {"in.wav", "hard.wav", "soft.wav", "./in.wav"}) {
    const Finished run = render("patch.json", "in.wav", same);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "tolvanectl: " + (folder_ / same) + ": would replace what it is made from\n");
  }
  EXPECT_EQ(readBytes(folder_ / "in.wav"), before);
  EXPECT_THAT(folder_.names(), ElementsAre("hard.wav", "in.wav", "patch.json", "soft.wav"));
}

TEST_F(RenderRefuses, ToReplaceThePatch) {
  const std::string before = readBytes(folder_ / "patch.json");
  EXPECT_EQ(render("patch.json", "in.wav", "patch.json").status, 1);
  EXPECT_EQ(readBytes(folder_ / "patch.json"), before);
}

TEST_F(RenderRefuses, ToReplaceWhatIsNoRegularFile) {
  const Finished null =
      runProgram({"render", "--patch", folder_ / "patch.json", folder_ / "in.wav", "/dev/null"});
  EXPECT_EQ(null.status, 1);
  EXPECT_EQ(null.err, "tolvanectl: /dev/null: is not a regular file\n");
  EXPECT_EQ(runShell("test -c /dev/null"), 0);
  const Finished folder =
      runProgram({"render", "--patch", folder_ / "patch.json", folder_ / "in.wav", folder_.path()});
  EXPECT_EQ(folder.status, 1);
}

TEST_F(RenderRefuses, AMissingRecording) {
  const Finished run = render("patch.json", "missing.wav", "out.wav");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, StartsWith("tolvanectl: " + (folder_ / "missing.wav") + ": "));
  EXPECT_THAT(run.err, HasSubstr("No such file or directory"));
  EXPECT_THAT(folder_.names(), ElementsAre("in.wav", "patch.json"));
}

TEST_F(RenderRefuses, WhatIsNoSoundFile) {
  const Finished run = render("patch.json", "patch.json", "out.wav");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, StartsWith("tolvanectl: " + (folder_ / "patch.json") + ": "));
  EXPECT_THAT(folder_.names(), ElementsAre("in.wav", "patch.json"));
}

TEST_F(RenderRefuses, ABadPatch) {
  writeText(folder_ / "bad.json", R"([{"inputChannel":0,"outputChannel":0,"active":true}])");
  const Finished run = render("bad.json", "in.wav", "out.wav");
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, HasSubstr("element 0"));
  EXPECT_THAT(run.err, HasSubstr("gain"));
  EXPECT_THAT(folder_.names(), ElementsAre("bad.json", "in.wav", "patch.json"));
}

TEST_F(RenderRefuses, AMissingPatch) {
  const Finished run = render("missing.json", "in.wav", "out.wav");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: " + (folder_ / "missing.json") + ": No such file or directory\n");
}

TEST_F(RenderRefuses, ToGuessTheOutputsOfAPatchThatRoutesNothing) {
  writePatch(folder_ / "off.json", {{0, 0, 1.0F, false}, {-1, 3, 1.0F, true}});
  const Finished run = render("off.json", "in.wav", "out.wav");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("the outputs must be given with --outputs"));
}

TEST_F(RenderRefuses, MoreChannelsThanAFileHolds) {
  writePatch(folder_ / "wide.json", {{0, 1024, 1.0F, true}});
  const Finished run = render("wide.json", "in.wav", "out.wav");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: " + (folder_ / "wide.json") +
                         ": output 1025 is routed, but a sound file has at most 1024 channels\n");
  EXPECT_THAT(folder_.names(), ElementsAre("in.wav", "patch.json", "wide.json"));
}

TEST_F(RenderRefuses, AFolderThatIsNotThere) {
  const Finished run = render("patch.json", "in.wav", "nowhere/out.wav");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: " + (folder_ / "nowhere/out.wav") + ": No such file or directory\n");
}

TEST_F(RenderRefuses, ToKeepHalfAFileWhenTheDiskIsFull) {
  writeText(folder_ / "out.wav", "what was there before");
  ChildProcess::Options options;
  options.limits = {{RLIMIT_FSIZE, 30000}};  // like a full disk: writing beyond it fails
  const Finished run = runProgram(
      {"render", "--patch", folder_ / "patch.json", folder_ / "in.wav", folder_ / "out.wav"}, options);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, StartsWith("tolvanectl: " + (folder_ / "out.wav") + ": "));
  EXPECT_EQ(readBytes(folder_ / "out.wav"), "what was there before");
  EXPECT_THAT(folder_.names(), ElementsAre("in.wav", "out.wav", "patch.json"));
}

TEST_F(RenderRefuses, ADamagedRecording) {
  Sound sound{1, 48000, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, {}};
  for (int i = 0; i < 200000; ++i)
    sound.samples.push_back(static_cast<float>(i * 7919 % 65536 - 32768) / 40000.0F);
  writeSound(folder_ / "in.flac", sound);
  const std::string whole = readBytes(folder_ / "in.flac");
  writeText(folder_ / "in.flac", whole.substr(0, whole.size() / 2));
  const Finished run = render("patch.json", "in.flac", "out.wav");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, StartsWith("tolvanectl: " + (folder_ / "in.flac") + ": "));
  EXPECT_THAT(folder_.names(), ElementsAre("in.flac", "in.wav", "patch.json"));
}

}  // namespace
}  // namespace tolvane::test
