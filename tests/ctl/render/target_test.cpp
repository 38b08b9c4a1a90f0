// The name that tolvanectl render's file gets, and when.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;

class RenderTarget : public testing::Test {
 protected:
  RenderTarget() {
    writePatch(folder_ / "patch.json", {{0, 0, 1.0F, true}});
    writeSound(folder_ / "in.wav", {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {0.5F}});
  }
  [[nodiscard]] Finished render(const std::string& output) const {
    return runProgram({"render", "--patch", folder_ / "patch.json", folder_ / "in.wav", folder_ / output});
  }
  void shell(const std::string& line) const {
    ASSERT_EQ(runShell("cd " + folder_.path() + " && " + line), 0);
  }
  void expectTheFile(const std::string& name) const {
    EXPECT_EQ(readSound(folder_ / name).samples, std::vector<float>{0.5F});
  }
  [[nodiscard]] bool isLink(const std::string& name) const {
    return runShell("test -L " + (folder_ / name)) == 0;
  }

  TemporaryFolder folder_;
};

TEST_F(RenderTarget, OfALinkIsWhatItLeadsToAndKeepsItsMode) {
  writeText(folder_ / "real.wav", "old");
  shell("chmod 640 real.wav && ln -s real.wav out.wav");
  ASSERT_EQ(render("out.wav").status, 0);
  EXPECT_TRUE(isLink("out.wav"));
  shell("test $(stat -c %a real.wav) = 640");
  expectTheFile("real.wav");
}

TEST_F(RenderTarget, OfALinkToNothingIsMadeWhereItLeads) {
  shell("mkdir there && ln -s there/second out.wav && ln -s ../real.wav there/second");
  ASSERT_EQ(render("out.wav").status, 0);
  EXPECT_TRUE(isLink("out.wav"));
  EXPECT_TRUE(isLink("there/second"));
  EXPECT_FALSE(isLink("real.wav"));
  expectTheFile("real.wav");
}

TEST_F(RenderTarget, OfALinkToAFolderThatIsNotThereCannotBeMade) {
  shell("ln -s nowhere/real.wav out.wav");
  const Finished run = render("out.wav");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: " + (folder_ / "out.wav") + ": No such file or directory\n");
  EXPECT_THAT(folder_.names(), ElementsAre("in.wav", "out.wav", "patch.json"));
}

TEST_F(RenderTarget, OfALinkThatGoesInACircleIsNone) {
  shell("ln -s other.wav out.wav && ln -s out.wav other.wav");
  const Finished run = render("out.wav");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: " + (folder_ / "out.wav") + ": Too many levels of symbolic links\n");
  EXPECT_TRUE(isLink("out.wav"));
}

TEST_F(RenderTarget, HasTheModeOfAnyNewFile) {
  shell("umask 027 && " + std::string(TOLVANECTL_PATH) + " render --patch patch.json in.wav out.wav");
  shell("test $(stat -c %a out.wav) = 640");
}

TEST_F(RenderTarget, HasNoNameUntilItIsWholeAndIsNotInTheWayOfAnother) {
  const std::string recording = readBytes(folder_ / "in.wav");
  ChildProcess slow({"render", "--patch", folder_ / "patch.json", "-", folder_ / "out.wav"});
  slow.write(recording.substr(0, recording.size() - 1));
  ASSERT_TRUE(ChildProcess::waitUntil([&] { return slow.hasReadInput(); })) << slow.err();
  EXPECT_THAT(folder_.names(), ElementsAre("in.wav", "patch.json"));

  writePatch(folder_ / "patch.json", {{0, 0, 2.0F, true}});
  ASSERT_EQ(render("out.wav").status, 0);
  EXPECT_EQ(readSound(folder_ / "out.wav").samples, std::vector<float>{1.0F});
  slow.write(recording.substr(recording.size() - 1));
  ASSERT_EQ(slow.finish().status, 0);
  expectTheFile("out.wav");
  EXPECT_THAT(folder_.names(), ElementsAre("in.wav", "out.wav", "patch.json"));
}

}  // namespace
}  // namespace tolvane::test
