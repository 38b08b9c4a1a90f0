// tolvanectl render, stopped halfway, leaves nothing under the final name.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;

class RenderInterrupted : public testing::TestWithParam<int> {
 protected:
  RenderInterrupted() {
    writePatch(folder_ / "patch.json", {{0, 0, 1.0F, true}});
    writeSound(source_ / "in.wav",
               {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, std::vector<float>(100000, 0.5F)});
  }

  /// Brings a rendering to the middle of its work: it has read half of the recording from a pipe.
  [[nodiscard]] bool feedHalf(const ChildProcess& child) const {
    const std::string recording = readBytes(source_ / "in.wav");
    child.write(recording.substr(0, recording.size() / 2));
    return ChildProcess::waitUntil([&] { return child.hasReadInput(); });
  }

  [[nodiscard]] std::vector<std::string> words() const {
    return {"render", "--patch", folder_ / "patch.json", "-", folder_ / "out.wav"};
  }

  TemporaryFolder folder_;
  TemporaryFolder source_;
};

TEST_P(RenderInterrupted, LeavesNoFile) {
  ChildProcess child(words());
  ASSERT_TRUE(feedHalf(child)) << child.err();
  child.send(GetParam());
  const Finished run = child.finishWithOpenInput();
  EXPECT_EQ(run.status, 128 + GetParam());
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(folder_.names(), ElementsAre("patch.json"));
}

TEST_P(RenderInterrupted, LeavesTheFileThatWasThere) {
  writeText(folder_ / "out.wav", "what was there before");
  ChildProcess child(words());
  ASSERT_TRUE(feedHalf(child)) << child.err();
  child.send(GetParam());
  EXPECT_EQ(child.finishWithOpenInput().status, 128 + GetParam());
  EXPECT_EQ(readBytes(folder_ / "out.wav"), "what was there before");
  EXPECT_THAT(folder_.names(), ElementsAre("out.wav", "patch.json"));
}

INSTANTIATE_TEST_SUITE_P(Signals, RenderInterrupted, testing::Values(SIGINT, SIGTERM, SIGHUP));

class RenderKilled : public RenderInterrupted {};

// The folder is in memory, where the file system has unnamed files.
TEST_P(RenderKilled, LeavesNothing) {
  ChildProcess child(words());
  ASSERT_TRUE(feedHalf(child)) << child.err();
  child.send(SIGKILL);
  EXPECT_EQ(child.finish().status, 128 + SIGKILL);
  EXPECT_THAT(folder_.names(), ElementsAre("patch.json"));
}

INSTANTIATE_TEST_SUITE_P(Signals, RenderKilled, testing::Values(SIGKILL));

TEST_F(RenderInterrupted, AWholeRecordingThroughAPipeIsRendered) {
  ChildProcess child(words());
  child.write(readBytes(source_ / "in.wav"));
  const Finished run = child.finish();
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(readSound(folder_ / "out.wav").samples, std::vector<float>(100000, 0.5F));
}

}  // namespace
}  // namespace tolvane::test
