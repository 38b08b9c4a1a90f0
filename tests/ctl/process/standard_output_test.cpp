// Standard input, output and error that are closed or have no reader.
#include <csignal>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

constexpr auto kRouting = "tolvanectl: routing on Tolvane Virtual Device\n";

class ClosedDescriptors : public testing::TestWithParam<std::set<int>> {
 protected:
  ClosedDescriptors() {
    writePatch(patch_, {{0, 0, 1.0F, true}});
    options_.closed = GetParam();
  }

  static std::string target(const ChildProcess& child, int descriptor) {
    std::error_code gone;
    const auto link = "/proc/" + std::to_string(child.pid()) + "/fd/" + std::to_string(descriptor);
    return std::filesystem::read_symlink(link, gone).string();
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
  ChildProcess::Options options_;
};

TEST_P(ClosedDescriptors, AreOpenOnNothingBeforeAnythingElseIs) {
  ChildProcess child({"run", "--patch", patch_, "--device", "Tolvane Virtual Device"}, options_);
  const auto isOnNothing = [&](int descriptor) { return target(child, descriptor) == "/dev/null"; };
  EXPECT_TRUE(ChildProcess::waitUntil([&] { return std::ranges::all_of(GetParam(), isOnNothing); }));
  child.send(SIGTERM);
  child.finish();
}

TEST_P(ClosedDescriptors, DoNotEndARunBeforeItsTime) {
  const auto start = std::chrono::steady_clock::now();
  const Finished run = runProgram(
      {"run", "--patch", patch_, "--device", "Tolvane Virtual Device", "--seconds", "0.5"}, options_);
  EXPECT_EQ(run.status, 0);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
  EXPECT_THAT(run.err, testing::StartsWith(GetParam().contains(2) ? "" : kRouting));
}

TEST_P(ClosedDescriptors, DoNotKeepAListFromBeingMade) {
  EXPECT_EQ(runProgram({"devices"}, options_).status, 0);
  EXPECT_EQ(runProgram({"check", patch_}, options_).status, 0);
}

using Closed = std::set<int>;
INSTANTIATE_TEST_SUITE_P(All, ClosedDescriptors,
                         testing::Values(Closed{0}, Closed{1}, Closed{2}, Closed{0, 1}, Closed{0, 2},
                                         Closed{1, 2}, Closed{0, 1, 2}));

TEST(StandardOutputWithoutAReader, IsAFailureInsteadOfASignal) {
  ChildProcess::Options options;
  options.out = ChildProcess::Out::nobody;
  const TemporaryFolder folder;
  writePatch(folder / "patch.json", {{0, 0, 1.0F, true}});
  for (const std::vector<std::string>& words : {std::vector<std::string>{"devices"},
                                                {"devices", "--watch"},
                                                {"check", folder / "patch.json"},
                                                {"aggregate", "list"}}) {
    const Finished run = runProgram(words, options);
    EXPECT_EQ(run.status, 1) << words[0];
    EXPECT_EQ(run.err, "tolvanectl: standard output cannot be written\n") << words[0];
  }
}

TEST(StandardOutputWithoutAReader, DoesNotKeepARunFromItsTime) {
  ChildProcess::Options options;
  options.out = ChildProcess::Out::nobody;
  const TemporaryFolder folder;
  writePatch(folder / "patch.json", {{0, 0, 1.0F, true}});
  const auto start = std::chrono::steady_clock::now();
  const Finished run = runProgram({"run", "--patch", folder / "patch.json", "--device",
                                   "Tolvane Virtual Device", "--meters", "--seconds", "1.5"},
                                  options);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, testing::StartsWith(kRouting));
  EXPECT_THAT(run.err, testing::EndsWith("tolvanectl: standard output cannot be written\n"));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
}

}  // namespace
}  // namespace tolvane::test
