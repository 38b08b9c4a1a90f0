// Commands while the system allows few further threads, or none.
#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

class WithoutThreads : public testing::TestWithParam<std::vector<std::string>> {
 protected:
  WithoutThreads() {
    writePatch(patch_, {{0, 0, 1.0F, true}});
    // The child runs as another user.
    std::filesystem::permissions(folder_.path(), std::filesystem::perms::all);
  }

  Finished runWith(int threads) {
    std::vector<std::string> arguments = GetParam();
    std::replace(arguments.begin(), arguments.end(), std::string("PATCH"), patch_);
    ChildProcess::Options options;
    options.threadLimit = threads;
    options.environment = {{"XDG_CONFIG_HOME", folder_.path()}};
    return runProgram(arguments, options);
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
};

TEST_P(WithoutThreads, NoneIsSaidInOneLine) {
  const Finished run = runWith(1);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err.find("tolvanectl: "), 0U) << run.err;
  EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
}

TEST_P(WithoutThreads, FewAreEnoughOrOneLineSaysThatTheyAreNot) {
  for (int threads = 2; threads <= 12; ++threads) {
    const Finished run = runWith(threads);
    if (run.status == 0) continue;
    EXPECT_EQ(run.status, 1) << threads;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << threads << "\n" << run.err;
  }
}

using Words = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(Commands, WithoutThreads,
                         testing::Values(Words{"devices"}, Words{"aggregate", "list"},
                                         Words{"aggregate", "create", "Stage", "Tolvane Virtual Device"},
                                         Words{"run", "--patch", "PATCH", "--seconds", "0.1"}));

}  // namespace
}  // namespace tolvane::test
