// A signal ends every command, whatever it waits for, and no file is left behind.
#include <csignal>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;

class EndedBySignal : public testing::TestWithParam<int> {
 protected:
  EndedBySignal() { writePatch(patch_, {{0, 0, 1.0F, true}}); }

  static void expectEndBySignal(ChildProcess& child) {
    child.send(GetParam());
    const Finished run = child.finishWithOpenInput();
    EXPECT_EQ(run.status, 128 + GetParam());
    EXPECT_EQ(run.err, "");
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
};

TEST_P(EndedBySignal, RenderOfARecordingThatStalls) {
  const TemporaryFolder elsewhere;
  writeSound(elsewhere / "in.wav", {.samples = std::vector<float>(100000, 0.5F)});
  const std::string recording = readBytes(elsewhere / "in.wav");
  ChildProcess child({"render", "--patch", patch_, "-", folder_ / "out.wav"});
  child.write(recording.substr(0, recording.size() / 2));
  ASSERT_TRUE(ChildProcess::waitUntil([&] { return child.hasReadInput(); })) << child.err();
  expectEndBySignal(child);
  EXPECT_THAT(folder_.names(), ElementsAre("patch.json"));
}

TEST_P(EndedBySignal, RenderBeforeTheRecordingBegins) {
  ChildProcess child({"render", "--patch", patch_, "-", folder_ / "out.wav"});
  ASSERT_TRUE(ChildProcess::waitUntil([&] { return child.isBlockedIn(SYS_read, STDIN_FILENO); }));
  expectEndBySignal(child);
  EXPECT_THAT(folder_.names(), ElementsAre("patch.json"));
}

TEST_P(EndedBySignal, RunWhosePatchIsAPipeWithoutAWriter) {
  const std::string pipe = folder_ / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  ChildProcess child({"run", "--patch", pipe});
  int writer = -1;  // writes nothing; can be opened once the child opens the other end
  ASSERT_TRUE(ChildProcess::waitUntil(
      [&] { return (writer = ::open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) >= 0; }));
  expectEndBySignal(child);
  ::close(writer);
}

class EndedBeforeAFullPipe : public EndedBySignal {
 protected:
  void expectEnd(const std::vector<std::string>& words) const {
    ChildProcess::Options options;
    options.out = ChildProcess::Out::stuck;
    ChildProcess child(words, options);
    ASSERT_TRUE(ChildProcess::waitUntil([&] { return child.isBlockedIn(SYS_write, STDOUT_FILENO); }));
    expectEndBySignal(child);
  }
};

TEST_P(EndedBeforeAFullPipe, Check) {
  expectEnd({"check", patch_});
}

TEST_P(EndedBeforeAFullPipe, Devices) {
  expectEnd({"devices"});
  expectEnd({"devices", "--json"});
}

TEST_P(EndedBeforeAFullPipe, DevicesWatch) {
  expectEnd({"devices", "--watch"});
}

TEST_P(EndedBeforeAFullPipe, AggregateList) {
  expectEnd({"aggregate", "list"});
}

TEST_P(EndedBeforeAFullPipe, Help) {
  expectEnd({"--help"});
}

INSTANTIATE_TEST_SUITE_P(Signals, EndedBySignal, testing::Values(SIGINT, SIGTERM, SIGHUP));
INSTANTIATE_TEST_SUITE_P(Signals, EndedBeforeAFullPipe, testing::Values(SIGINT, SIGTERM, SIGHUP));

/// Without SIGHUP, which does not end a run but reloads the patch.
class RunEndedBeforeAFullPipe : public EndedBeforeAFullPipe {};

TEST_P(RunEndedBeforeAFullPipe, InItsTrace) {
  expectEnd({"run", "--patch", patch_, "--device", "Tolvane Virtual Device"});
}

INSTANTIATE_TEST_SUITE_P(Signals, RunEndedBeforeAFullPipe, testing::Values(SIGINT, SIGTERM));

}  // namespace
}  // namespace tolvane::test
