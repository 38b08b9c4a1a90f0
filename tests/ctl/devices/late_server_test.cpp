// Commands that need the device list, on a sound server that answers late or never.
#include <chrono>
#include <csignal>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/run/notes.h"
#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "support/pipewire_client.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

class LateServer : public testing::Test {
 protected:
  LateServer() {
    writePatch(patch_, {{0, 0, 1.0F, true}});
    // Wait until the server has created the card: before that it lists none.
    EXPECT_TRUE(ChildProcess::waitUntil(
        [] { return runProgram({"devices"}).out.find("  Card  ") != std::string::npos; }));
  }

  /// Runs a command to its end. The server is silent until `lateness` after the command's start.
  Finished runLate(std::chrono::milliseconds lateness, const std::vector<std::string>& arguments) {
    server_.hang();
    ChildProcess child(arguments);
    std::this_thread::sleep_for(lateness);
    server_.unhang();
    return child.finish();
  }

  /// Runs a command to its end while the server is silent throughout.
  Finished runHung(const std::vector<std::string>& arguments) {
    server_.hang();
    Finished run = runProgram(arguments);
    server_.unhang();
    return run;
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
  PipeWireServer server_{{{.name = "Card", .inputs = 2, .outputs = 2, .cardId = 76}}};
};

TEST_F(LateServer, RunRoutesOnItsFirstDeviceAndSaysSo) {
  const Finished run = runLate(600ms, {"run", "--patch", patch_, "--seconds", "0.2"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr(" in=2 out=2\n"));
  EXPECT_EQ(run.err, runNotes(run, "Card"));
}

TEST_F(LateServer, RunWaitsForTheDeviceThatIsNamed) {
  const Finished run =
      runLate(1600ms, {"run", "--patch", patch_, "--device", "card", "--wait", "30", "--seconds", "0.2"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, runNotes(run, "Card"));
}

TEST_F(LateServer, RunWaitsForADeviceThatIsPluggedInLater) {
  ChildProcess child({"run", "--patch", patch_, "--device", "Visitor", "--wait", "60", "--seconds", "0.2"});
  PipeWireClient().addCard({.name = "Visitor", .inputs = 3});
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, runNotes(run, "Visitor"));
}

TEST_F(LateServer, RunTakesTheVirtualDeviceWhereTheServerHasNone) {
  const PipeWireServer empty({});
  const Finished run = runProgram({"run", "--patch", patch_, "--seconds", "0.2"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, runNotes(run, "Tolvane Virtual Device"));
}

// In seconds. Drivers that are late once are waited for as long again: only the silent server is reported.
constexpr const char* kEnoughForOthers = "2";
constexpr const char* kSilence = "tolvanectl: the sound server pipewire does not answer\n";

TEST_F(LateServer, RunDoesNotTakeTheVirtualDeviceInsteadOfASilentServers) {
  const Finished run = runHung({"run", "--patch", patch_, "--wait", kEnoughForOthers});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, kSilence);
  EXPECT_EQ(run.out, "");
}

TEST_F(LateServer, ADeviceThatASilentServerMayHaveIsNoUnknownOne) {
  const Finished run = runHung({"run", "--patch", patch_, "--device", "Card", "--wait", kEnoughForOthers});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, kSilence);
  const Finished made = runHung({"aggregate", "create", "Stage", "Card", "--wait", kEnoughForOthers});
  EXPECT_EQ(made.status, 1);
  EXPECT_EQ(made.err, kSilence);
}

TEST_F(LateServer, ThatIsSilentHoldsUpNoDeviceOfOthers) {
  const Finished run = runHung(
      {"run", "--patch", patch_, "--device", "Tolvane Virtual Device", "--wait", "1000", "--seconds", "0.2"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, runNotes(run, "Tolvane Virtual Device"));
}

TEST_F(LateServer, ListsWaitForIt) {
  const Finished devices = runLate(1600ms, {"devices", "--wait", "30"});
  EXPECT_EQ(devices.status, 0);
  EXPECT_EQ(devices.err, "");
  EXPECT_THAT(devices.out, HasSubstr("  Card  "));
}

TEST_F(LateServer, ListsSayThatItIsSilentAndPrintWhatIsThere) {
  const Finished devices = runHung({"devices", "--wait", kEnoughForOthers});
  EXPECT_EQ(devices.status, 1);
  EXPECT_EQ(devices.err, kSilence);
  EXPECT_THAT(devices.out, HasSubstr("Tolvane Virtual Device"));
  const Finished aggregates = runHung({"aggregate", "list", "--wait", kEnoughForOthers});
  EXPECT_EQ(aggregates.status, 1);
  EXPECT_EQ(aggregates.err, kSilence);
  EXPECT_EQ(aggregates.out, "aggregate  device  inputs  outputs  there\n");
}

TEST_F(LateServer, WatchesWaitForIt) {
  server_.hang();
  ChildProcess child({"devices", "--watch", "--wait", "60"});
  std::this_thread::sleep_for(1600ms);
  EXPECT_EQ(child.out(), "");
  server_.unhang();
  ASSERT_TRUE(child.waitForOut("Tolvane Virtual Device"));
  child.send(SIGTERM);
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(run.out, HasSubstr("  Card  "));
  EXPECT_THAT(run.out, Not(HasSubstr("arrived: ")));
}

TEST_F(LateServer, WatchesSayThatItIsSilentAndThenThatItsDevicesArrive) {
  server_.hang();
  ChildProcess child({"devices", "--watch", "--wait", kEnoughForOthers});
  EXPECT_TRUE(child.waitForErr(kSilence));
  EXPECT_TRUE(child.waitForOut("Tolvane Virtual Device"));
  server_.unhang();
  EXPECT_TRUE(child.waitForOut("arrived: "));
  child.send(SIGTERM);
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, kSilence);
}

TEST_F(LateServer, AnAggregateIsMadeOnceItAnswers) {
  const Finished made = runLate(1600ms, {"aggregate", "create", "Stage", "Card", "--wait", "30"});
  EXPECT_EQ(made.status, 0);
  EXPECT_EQ(made.err, "");
}

}  // namespace
}  // namespace tolvane::test
