// tolvanectl render prints nothing on standard output, and works without a reader there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;

class RenderQuiet : public testing::Test {
 protected:
  RenderQuiet() {
    // The second route is silent, which a message reports.
    writePatch(folder_ / "patch.json", {{0, 0, 1.0F, true}, {7, 0, 1.0F, true}});
    writeSound(folder_ / "in.wav", {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {0.5F, 0.25F}});
  }

  /// The status of a rendering whose output pipes have no reader.
  [[nodiscard]] int renderWithoutReader(const std::string& redirection) const {
    return runShell("cd " + folder_.path() + " && mkfifo pipe && exec 4<>pipe 3>pipe 4>&- && rm pipe && " +
                    TOLVANECTL_PATH + " render --patch patch.json in.wav out.wav " + redirection);
  }
  void expectTheFile() const {
    EXPECT_EQ(readSound(folder_ / "out.wav").samples, (std::vector<float>{0.5F, 0.25F}));
    EXPECT_THAT(folder_.names(), ElementsAre("in.wav", "out.wav", "patch.json"));
  }

  TemporaryFolder folder_;
};

TEST_F(RenderQuiet, OnStandardOutput) {
  const Finished run =
      runProgram({"render", "--patch", folder_ / "patch.json", folder_ / "in.wav", folder_ / "out.wav"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "tolvanectl: 1 route is silent: the file has only 1 input channel\n");
}

TEST_F(RenderQuiet, FinishesTheFileWhenNobodyReadsStandardOutput) {
  EXPECT_EQ(renderWithoutReader(">&3"), 0);
  expectTheFile();
}

TEST_F(RenderQuiet, FinishesTheFileWhenNobodyReadsItsMessages) {
  EXPECT_EQ(renderWithoutReader(">&3 2>&3"), 0);
  expectTheFile();
}

}  // namespace
}  // namespace tolvane::test
