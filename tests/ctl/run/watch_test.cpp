// tolvanectl run --watch: a changed patch file becomes live at once, however it was changed.
#include <csignal>
#include <cstdio>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ctl/run/notes.h"
#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class RunWatch : public testing::Test {
 protected:
  RunWatch() { writePatch(patch_, {{0, 0, 1.0F, true}}); }

  [[nodiscard]] std::vector<std::string> words(const std::string& patch) const {
    return {"run", "--patch", patch, "--device", "Tolvane Virtual Device", "--watch", "--meters"};
  }

  /// True if the changed patch is live: its message appears, and the meters show `level`. Output n + 1 sounds
  /// at -18 dBFS plus its route's gain.
  static bool heard(const ChildProcess& child, const std::string& level) {
    return child.waitForErr(": 1 route is live\n") && child.waitForOut(level);
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
};

TEST_F(RunWatch, TakesOverAFileWrittenInPlace) {
  ChildProcess child(words(patch_));
  ASSERT_TRUE(child.waitForOut("in 1 -18.0 dBFS  out 1 -18.0 dBFS\n"));
  writePatch(patch_, {{2, 3, 0.5F, true}});
  EXPECT_TRUE(heard(child, "in 3 -18.0 dBFS  out 4 -24.0 dBFS\n")) << child.out() << child.err();
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(RunWatch, TakesOverAFileThatAnEditorPutsInThePlace) {
  ChildProcess child(words(patch_));
  ASSERT_TRUE(child.waitForOut("in 1 -18.0 dBFS  out 1 -18.0 dBFS\n"));
  for (int round = 1; round <= 3; ++round) {
    writePatch(folder_ / "patch.json~new", {{round, round, 0.5F, true}});
    std::filesystem::rename(folder_ / "patch.json~new", patch_);
    const std::string channel = std::to_string(round + 1);
    EXPECT_TRUE(heard(child, "in " + channel + " -18.0 dBFS  out " + channel + " -24.0 dBFS\n"));
  }
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(RunWatch, TakesOverTheFileBehindALinkAndALinkThatLeadsElsewhere) {
  const TemporaryFolder elsewhere;
  writePatch(elsewhere / "a.json", {{0, 0, 1.0F, true}});
  writePatch(elsewhere / "b.json", {{5, 5, 1.0F, true}});
  std::filesystem::create_symlink(elsewhere / "a.json", folder_ / "link.json");
  ChildProcess child(words(folder_ / "link.json"));
  ASSERT_TRUE(child.waitForOut("out 1 -18.0 dBFS\n"));
  writePatch(elsewhere / "a.json", {{2, 2, 1.0F, true}});
  EXPECT_TRUE(heard(child, "in 3 -18.0 dBFS  out 3 -18.0 dBFS\n"));
  std::filesystem::create_symlink(elsewhere / "b.json", folder_ / "new.json");
  std::filesystem::rename(folder_ / "new.json", folder_ / "link.json");
  EXPECT_TRUE(heard(child, "in 6 -18.0 dBFS  out 6 -18.0 dBFS\n"));
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(RunWatch, KeepsTheOldRoutesWhenTheNewFileIsBadAndSaysWhy) {
  ChildProcess child(words(patch_));
  ASSERT_TRUE(child.waitForOut("in 1 -18.0 dBFS  out 1 -18.0 dBFS\n"));
  writeText(patch_, R"([{"inputChannel":0,"outputChannel":0,"gain":"loud","active":true}])");
  ASSERT_TRUE(child.waitForErr("; the routes stay as they were\n"));
  EXPECT_THAT(child.err(), HasSubstr("element 0, member \"gain\""));
  const std::size_t seen = child.out().size();
  EXPECT_TRUE(ChildProcess::waitUntil([&] {
    return child.out().substr(seen).find("in 1 -18.0 dBFS  out 1 -18.0 dBFS\n") != std::string::npos;
  }));
  writePatch(patch_, {{3, 3, 0.25F, true}});
  EXPECT_TRUE(heard(child, "in 4 -18.0 dBFS  out 4 -30.0 dBFS\n"));
  child.send(SIGINT);
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("    4       4  0.25  -12.0  yes\n"));
}

TEST_F(RunWatch, KeepsTheOldRoutesWhileTheFileIsGone) {
  ChildProcess child(words(patch_));
  ASSERT_TRUE(child.waitForOut("out 1 -18.0 dBFS\n"));
  std::filesystem::remove(patch_);
  ASSERT_TRUE(child.waitForErr(patch_ + ": No such file or directory; the routes stay as they were\n"));
  writePatch(patch_, {{6, 6, 1.0F, true}});
  EXPECT_TRUE(heard(child, "in 7 -18.0 dBFS  out 7 -18.0 dBFS\n"));
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

class RunWatchPipe : public RunWatch {
 protected:
  /// Replaces the file by a pipe without a writer.
  void putPipeInThePlace() const {
    const std::string pipe = folder_ / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::filesystem::rename(pipe, patch_);
  }
  [[nodiscard]] bool isRefused(const ChildProcess& child) const {
    return child.waitForErr(patch_ + ": is not a regular file; the routes stay as they were\n");
  }
};

TEST_F(RunWatchPipe, IsNotWaitedForAndTheNextFileIsTakenOver) {
  ChildProcess child(words(patch_));
  ASSERT_TRUE(child.waitForOut("out 1 -18.0 dBFS\n"));
  putPipeInThePlace();
  ASSERT_TRUE(isRefused(child));
  writePatch(folder_ / "new.json", {{6, 6, 1.0F, true}});
  std::filesystem::rename(folder_ / "new.json", patch_);
  EXPECT_TRUE(heard(child, "in 7 -18.0 dBFS  out 7 -18.0 dBFS\n"));
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(RunWatchPipe, IsNotWaitedForOnAHangup) {
  ChildProcess child({"run", "--patch", patch_, "--device", "Tolvane Virtual Device", "--meters"});
  ASSERT_TRUE(child.waitForOut("out 1 -18.0 dBFS\n"));
  putPipeInThePlace();
  child.send(SIGHUP);
  ASSERT_TRUE(isRefused(child));
  child.send(SIGTERM);
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(RunWatchPipe, DoesNotPutOffTheEnd) {
  std::vector<std::string> limited = words(patch_);
  limited.insert(limited.end(), {"--seconds", "5"});
  ChildProcess child(limited);
  ASSERT_TRUE(child.waitForOut("out 1 -18.0 dBFS\n"));
  putPipeInThePlace();
  EXPECT_EQ(child.finish().status, 0);
}

TEST_F(RunWatch, SaysNothingWhenTheTextIsTheSame) {
  ChildProcess child(words(patch_));
  ASSERT_TRUE(child.waitForOut("out 1 -18.0 dBFS\n"));
  writePatch(patch_, {{0, 0, 1.0F, true}});
  writePatch(folder_ / "another.json", {{1, 1, 1.0F, true}});
  // Two more lines of meters take over a second, by when the file has settled.
  const std::size_t seen = child.out().size();
  ASSERT_TRUE(ChildProcess::waitUntil([&] { return child.out().size() > seen + 80; }));
  child.send(SIGINT);
  const Finished run = child.finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, runNotes(run, "Tolvane Virtual Device"));
}

TEST_F(RunWatch, DoesNotWatchUnlessAsked) {
  ChildProcess child({"run", "--patch", patch_, "--device", "Tolvane Virtual Device", "--meters"});
  ASSERT_TRUE(child.waitForOut("out 1 -18.0 dBFS\n"));
  writePatch(patch_, {{2, 3, 0.5F, true}});
  const std::size_t seen = child.out().size();
  ASSERT_TRUE(ChildProcess::waitUntil([&] { return child.out().size() > seen + 80; }));
  EXPECT_THAT(child.out(), Not(HasSubstr("out 4")));
  child.send(SIGINT);
  EXPECT_EQ(child.finish().status, 0);
}

}  // namespace
}  // namespace tolvane::test
