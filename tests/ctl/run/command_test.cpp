// tolvanectl run from start to summary, on the virtual device.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/run/notes.h"
#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;

constexpr const char* kVirtual = "Tolvane Virtual Device";

/// The number after "label: " in the output; -1 if there is none.
long figure(const std::string& out, const std::string& label) {
  const std::size_t at = out.find(label + ": ");
  return at == std::string::npos ? -1 : std::stol(out.substr(at + label.size() + 2));
}

class Run : public testing::Test {
 protected:
  Run() { writePatch(patch_, {{0, 0, 1.0F, true}, {1, 4, 0.5F, false}}); }

  [[nodiscard]] std::vector<std::string> words(const std::vector<std::string>& more = {},
                                               const std::string& device = kVirtual) const {
    std::vector<std::string> all = {"run", "--patch", patch_, "--device", device};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
};

TEST_F(Run, EndsByItselfAfterTheSecondsGiven) {
  const Finished run = runProgram(words({"--seconds", "0.5"}));
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, runNotes(run, kVirtual));
  EXPECT_THAT(run.out, HasSubstr("\nscheduling: SCHED_"));
  EXPECT_THAT(run.out, HasSubstr("[Engine] Running ✓\n"));
  EXPECT_THAT(run.out, HasSubstr("[IOProc] first call completed OK ✓\n"));
  EXPECT_GT(figure(run.out, "cycles"), 0);
  EXPECT_GE(figure(run.out, "overloads"), 0);
  EXPECT_THAT(run.out, HasSubstr("input  output  gain    dB  active\n"
                                 "    1       1   1.0   0.0  yes\n"
                                 "    2       5   0.5  -6.0  no\n"));
}

class RunSignalled : public Run, public testing::WithParamInterface<int> {};

TEST_P(RunSignalled, EndsWithItsSummary) {
  ChildProcess child(words());
  ASSERT_TRUE(child.waitForOut("[IOProc] first call completed OK ✓"));
  child.send(GetParam());
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_GT(figure(run.out, "cycles"), 0);
  EXPECT_THAT(run.out, HasSubstr("overloads: "));
}

INSTANTIATE_TEST_SUITE_P(Signals, RunSignalled, testing::Values(SIGINT, SIGTERM));

TEST_F(Run, TakesAPartOfTheNameOrTheIdentifier) {
  EXPECT_EQ(runProgram(words({"--seconds", "0.1"}, "VANE VIRT")).status, 0);
  const Finished list = runProgram({"devices"});
  const std::size_t line = list.out.rfind('\n', list.out.find(kVirtual)) + 1;
  const std::string id = std::to_string(std::stoul(list.out.substr(line)));
  const Finished run = runProgram(words({"--seconds", "0.1"}, id));
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("[Engine] id=" + id + " in=18 out=20\n"));
}

TEST_F(Run, TakesTheFirstDeviceWhenNoneIsNamed) {
  const Finished list = runProgram({"devices"});
  const std::size_t second = list.out.find('\n') + 1;
  const std::string id = std::to_string(std::stoul(list.out.substr(second)));
  const Finished run = runProgram({"run", "--patch", patch_, "--seconds", "0.1"});
  EXPECT_THAT(run.out, HasSubstr("[Engine] id=" + id + " "));
}

TEST_F(Run, SaysWhichDevicesThereAreWhenItKnowsNoSuchDevice) {
  for (const char* unknown : {"Nobody's Interface", "4294967295", "99999999999999999999"}) {
    const Finished run = runProgram(words({"--wait", "0.1"}, unknown));
    EXPECT_EQ(run.status, 4);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err,
                HasSubstr("no device is called \"" + std::string(unknown) + "\"; the devices are:\n"));
    EXPECT_THAT(run.err, HasSubstr(kVirtual));
  }
}

TEST_F(Run, RefusesABadPatchBeforeItLooksForTheDevice) {
  writeText(patch_, "[{}]");
  const Finished run = runProgram(words({}, "Nobody's Interface"));
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr(patch_ + ": element 0"));
}

TEST_F(Run, FailsForAPatchThatIsNotThere) {
  const Finished run = runProgram({"run", "--patch", folder_ / "missing.json"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "tolvanectl: " + (folder_ / "missing.json") + ": No such file or directory\n");
}

TEST_F(Run, ReadsThePatchAgainOnHangup) {
  ChildProcess child(words());
  ASSERT_TRUE(child.waitForOut("[IOProc] first call completed OK ✓"));
  writePatch(patch_, {{2, 3, 0.25F, true}, {3, 3, 0.25F, true}});
  child.send(SIGHUP);
  ASSERT_TRUE(child.waitForErr(patch_ + ": 2 routes are live\n"));
  child.send(SIGTERM);
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("    3       4  0.25  -12.0  yes\n"
                                 "    4       4  0.25  -12.0  yes\n"));
}

TEST_F(Run, KeepsTheRoutesWhenThePatchIsBadOnHangup) {
  ChildProcess child(words());
  ASSERT_TRUE(child.waitForOut("[IOProc] first call completed OK ✓"));
  writeText(patch_, "[");
  child.send(SIGHUP);
  ASSERT_TRUE(child.waitForErr("; the routes stay as they were\n"));
  child.send(SIGINT);
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, HasSubstr("\ntolvanectl: " + patch_ + ": "));
  EXPECT_THAT(run.out, HasSubstr("    1       1   1.0   0.0  yes\n"));
}

TEST_F(Run, NotesRoutesThatAreNotHeard) {
  writePatch(patch_, std::vector<PatchConnection>(65, {0, 0, 0.01F, true}));
  const Finished run = runProgram(words({"--seconds", "0.1"}));
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "tolvanectl: " + patch_ +
                         ": 65 routes are active, but only the first 64 of them are heard\n" +
                         runNotes(run, kVirtual));
}

}  // namespace
}  // namespace tolvane::test
