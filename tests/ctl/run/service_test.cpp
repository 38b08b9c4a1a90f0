// tolvanectl run under a service manager: what it reports, and when.
#include <chrono>
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "ctl/support/notify_socket.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;

class RunService : public testing::Test {
 protected:
  RunService() { writePatch(patch_, {{0, 0, 1.0F, true}}); }

  [[nodiscard]] static ChildProcess::Options under(const NotifySocket& manager,
                                                   const std::string& watchdogUs = "",
                                                   const std::string& watchdogProcess = "") {
    ChildProcess::Options options;
    options.environment["NOTIFY_SOCKET"] = manager.address();
    if (!watchdogUs.empty()) options.environment["WATCHDOG_USEC"] = watchdogUs;
    if (!watchdogProcess.empty()) options.environment["WATCHDOG_PID"] = watchdogProcess;
    return options;
  }

  [[nodiscard]] std::vector<std::string> words(const std::string& device = "Tolvane Virtual Device") const {
    return {"run", "--patch", patch_, "--device", device};
  }

  static constexpr const char* kReady = "READY=1\nSTATUS=routing on Tolvane Virtual Device";
  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
  NotifySocket manager_;
};

TEST_F(RunService, TellsThatItWaitsThatItIsReadyAndThatItStops) {
  ChildProcess child(words(), under(manager_));
  ASSERT_TRUE(manager_.waitFor(kReady)) << child.err();
  EXPECT_EQ(manager_.reports().front(), "STATUS=waiting for Tolvane Virtual Device");
  // The trace of the first cycle is older than the report. What the child has written may still be on its way
  // here, but a stopped child writes no more.
  child.send(SIGSTOP);
  EXPECT_TRUE(child.waitForOut("[IOProc] frameCount="));
  child.send(SIGCONT);
  child.send(SIGTERM);
  EXPECT_TRUE(manager_.waitFor("STOPPING=1"));
  EXPECT_EQ(child.finish().status, 0);
  EXPECT_FALSE(manager_.has("WATCHDOG=1"));  // nobody asked for it
}

TEST_F(RunService, TellsAnAbstractSocket) {
  NotifySocket abstract(NotifySocket::Kind::abstract);
  const ChildProcess child(words(), under(abstract));
  EXPECT_TRUE(abstract.waitFor(kReady)) << child.err();
}

TEST_F(RunService, GivesSignsOfLifeWhileCyclesPass) {
  const ChildProcess child(words(), under(manager_, "400000"));
  for (int sign = 0; sign < 5; ++sign) ASSERT_TRUE(manager_.waitFor("WATCHDOG=1")) << child.err();
  EXPECT_TRUE(manager_.has(kReady));
}

TEST_F(RunService, GivesNoSignsOfLifeForAnotherProcess) {
  const ChildProcess child(words(), under(manager_, "400000", "1"));
  ASSERT_TRUE(manager_.waitFor(kReady)) << child.err();
  EXPECT_EQ(manager_.count("WATCHDOG=1", 1s), 0);
}

TEST_F(RunService, RunsWithoutAManagerThatItCanReach) {
  ChildProcess::Options options;
  options.environment["NOTIFY_SOCKET"] = folder_ / "nobody";
  ChildProcess child(words(), options);
  EXPECT_TRUE(child.waitForErr("routing on Tolvane Virtual Device\n"));
  child.send(SIGTERM);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(RunService, RunsOnWhileTheManagerReadsNothing) {
  ChildProcess child(words(), under(manager_, "4000"));  // a sign each millisecond, more than any queue holds
  ASSERT_TRUE(child.waitForErr("routing on Tolvane Virtual Device\n"));
  child.send(SIGHUP);
  EXPECT_TRUE(child.waitForErr(": 1 route is live\n"));
  child.send(SIGTERM);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(RunService, ANameCannotForgeAReport) {
  auto arguments = words("none\nREADY=1");
  arguments.insert(arguments.end(), {"--wait", "0"});
  ChildProcess child(arguments, under(manager_));
  EXPECT_TRUE(manager_.waitFor("STATUS=waiting for none\\nREADY=1"));
  EXPECT_EQ(child.finish().status, 4);
}

TEST_F(RunService, AsksForTimeWhileItsDeviceIsMissing) {
  auto arguments = words("a card that is not there");
  arguments.insert(arguments.end(), {"--wait", "100"});
  ChildProcess child(arguments, under(manager_));
  EXPECT_TRUE(manager_.waitFor("EXTEND_TIMEOUT_USEC=30000000"));
  child.send(SIGTERM);
  EXPECT_EQ(child.finish().status, 0);
  EXPECT_FALSE(manager_.has(kReady));
}

}  // namespace
}  // namespace tolvane::test
