// tolvanectl run --meters: the levels of the virtual device's sines, -18 dBFS each, after the routes' gains.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;

class RunMeters : public testing::Test {
 protected:
  RunMeters() { writePatch(patch_, {{0, 0, 1.0F, true}, {17, 19, 0.5F, true}, {1, 2, 1.0F, false}}); }

  [[nodiscard]] std::vector<std::string> words() const {
    return {"run", "--patch", patch_, "--device", "Tolvane Virtual Device", "--meters"};
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
};

constexpr const char* kLine = "in 1 -18.0 dBFS  in 18 -18.0 dBFS  out 1 -18.0 dBFS  out 20 -24.0 dBFS\n";

TEST_F(RunMeters, PrintsALineOfLevelsWhereThereIsNoTerminal) {
  ChildProcess child(words());
  EXPECT_TRUE(child.waitForOut(kLine)) << child.out();
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(RunMeters, PrintsTheSameLineInEveryLocale) {
  ChildProcess::Options options;
  options.environment = {{"LC_ALL", "de_DE.UTF-8"}, {"LANG", "de_DE.UTF-8"}};
  ChildProcess child(words(), options);
  EXPECT_TRUE(child.waitForOut(kLine)) << child.out();
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(RunMeters, FollowsThePatch) {
  ChildProcess child(words());
  ASSERT_TRUE(child.waitForOut(kLine)) << child.out();
  writePatch(patch_, {{4, 5, 0.25F, true}, {4, 6, -2.0F, true}});
  child.send(SIGHUP);
  EXPECT_TRUE(child.waitForOut("in 5 -18.0 dBFS  out 6 -30.0 dBFS  out 7 -12.0 dBFS\n")) << child.out();
  writePatch(patch_, {});
  child.send(SIGHUP);
  EXPECT_TRUE(child.waitForOut("no routed channels\n")) << child.out();
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(RunMeters, LeavesOutChannelsThatTheDeviceDoesNotHave) {
  writePatch(patch_, {{18, 1, 1.0F, true}, {0, 20, 1.0F, true}, {-1, -1, 1.0F, true}});
  ChildProcess child(words());
  EXPECT_TRUE(child.waitForOut("in 1 -18.0 dBFS  out 2 -inf dBFS\n")) << child.out();
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

class RunMeterScreen : public RunMeters {
 protected:
  static ChildProcess::Options onTerminal() {
    ChildProcess::Options options;
    options.terminalOut = true;
    options.environment = {{"TERM", "xterm-256color"}, {"LC_ALL", "C.UTF-8"}};
    return options;
  }
};

TEST_F(RunMeterScreen, DrawsTheLevelsOnATerminalAndEndsByAKey) {
  ChildProcess child(words(), onTerminal());
  ASSERT_TRUE(child.waitForOut("-24.0 dBFS")) << child.out();
  EXPECT_TRUE(child.waitForOut("-18.0 dBFS"));
  EXPECT_TRUE(child.waitForOut("in 18"));
  EXPECT_TRUE(child.waitForOut("out 20"));
  EXPECT_TRUE(child.waitForOut("Tolvane Virtual Device"));
  child.write("q");
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  // The summary comes after the terminal is restored.
  const std::size_t givenBack = run.out.rfind("\033[?1049l");
  ASSERT_NE(givenBack, std::string::npos);
  EXPECT_THAT(run.out.substr(givenBack), HasSubstr("cycles: "));
}

class RunMeterScreenSignalled : public RunMeterScreen, public testing::WithParamInterface<int> {};

TEST_P(RunMeterScreenSignalled, GivesTheTerminalBack) {
  ChildProcess child(words(), onTerminal());
  ASSERT_TRUE(child.waitForOut("-24.0 dBFS")) << child.out();
  child.send(GetParam());
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("\033[?1049l"));
}

INSTANTIATE_TEST_SUITE_P(Signals, RunMeterScreenSignalled, testing::Values(SIGINT, SIGTERM, SIGQUIT));

/// With and without the child as its terminal's session leader, as in a terminal window of its own.
class RunOnAClosedTerminal : public RunMeterScreen, public testing::WithParamInterface<bool> {};

TEST_P(RunOnAClosedTerminal, Ends) {
  ChildProcess::Options options = onTerminal();
  options.ownTerminal = GetParam();
  ChildProcess child(words(), options);
  ASSERT_TRUE(child.waitForOut("-24.0 dBFS")) << child.out();
  child.closeTerminal();
  EXPECT_EQ(child.finish().status, 1);  // the summary cannot be written
}

INSTANTIATE_TEST_SUITE_P(Leads, RunOnAClosedTerminal, testing::Bool());

TEST_F(RunMeterScreen, EndsWithItsTerminalAlsoWithoutMeters) {
  ChildProcess::Options options = onTerminal();
  options.ownTerminal = true;
  ChildProcess child({"run", "--patch", patch_, "--device", "Tolvane Virtual Device"}, options);
  ASSERT_TRUE(child.waitForOut("first call completed OK")) << child.out();
  child.closeTerminal();
  EXPECT_EQ(child.finish().status, 1);
}

class RunMeterLines : public RunMeterScreen, public testing::WithParamInterface<const char*> {};

TEST_P(RunMeterLines, ArePrintedOnATerminalThatCannotBeDrawnOn) {
  ChildProcess::Options options = onTerminal();
  options.environment["TERM"] = GetParam();
  ChildProcess child(words(), options);
  // A terminal ends its lines with CR LF.
  EXPECT_TRUE(
      child.waitForOut("\r\nin 1 -18.0 dBFS  in 18 -18.0 dBFS  out 1 -18.0 dBFS  out 20 -24.0 dBFS\r\n"))
      << child.out();
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
  EXPECT_THAT(child.out(), testing::Not(HasSubstr("\033")));
}

INSTANTIATE_TEST_SUITE_P(Terminals, RunMeterLines, testing::Values("dumb", "no-such-terminal", ""));

}  // namespace
}  // namespace tolvane::test
