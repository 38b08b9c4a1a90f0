// A calendar clock that jumps, as when the machine's time is set, changes nothing.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using namespace std::chrono_literals;

class JumpingClock : public testing::Test {
 protected:
  JumpingClock() {
    writePatch(patch_, {{0, 0, 1.0F, true}});
    options_.environment = {{"LD_PRELOAD", TOLVANE_JUMPING_CLOCK}};
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
  ChildProcess::Options options_;
};

TEST_F(JumpingClock, ARunEndsInItsTime) {
  const auto start = std::chrono::steady_clock::now();
  const Finished run = runProgram(
      {"run", "--patch", patch_, "--device", "Tolvane Virtual Device", "--meters", "--seconds", "1.5"},
      options_);
  const auto took = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_GE(took, 1500ms);
  EXPECT_LT(took, 60s);
  EXPECT_THAT(run.out, Not(HasSubstr("\ncycles: 0\n")));
}

TEST_F(JumpingClock, AWatchedPatchIsTakenOver) {
  ChildProcess child({"run", "--patch", patch_, "--device", "Tolvane Virtual Device", "--watch", "--meters"},
                     options_);
  ASSERT_TRUE(child.waitForOut("in 1 -18.0 dBFS  out 1 -18.0 dBFS\n"));
  writePatch(patch_, {{2, 3, 0.5F, true}});
  EXPECT_TRUE(child.waitForErr(": 1 route is live\n"));
  EXPECT_TRUE(child.waitForOut("in 3 -18.0 dBFS  out 4 -24.0 dBFS\n"));
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(JumpingClock, DevicesAreListed) {
  EXPECT_EQ(runProgram({"devices", "--wait", "1"}, options_).status, 0);
  EXPECT_EQ(runProgram({"run", "--patch", patch_, "--device", "nobody's", "--wait", "0.2"}, options_).status,
            4);
}

}  // namespace
}  // namespace tolvane::test
