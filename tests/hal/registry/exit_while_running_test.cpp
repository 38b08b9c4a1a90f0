// A process that exits while a device runs ends by itself, soon, and with its own status.
#include <chrono>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace tolvane::test {

namespace {

using namespace std::chrono_literals;

struct Ending {
  int status;  // of the process; -1 when a signal ended it
  std::chrono::steady_clock::duration took;
};

Ending endingOf(const std::string& way) {
  const std::string command = std::string(TOLVANE_EXIT_WHILE_RUNNING) + " " + way;
  const auto begin = std::chrono::steady_clock::now();
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, std::chrono::steady_clock::now() - begin};
}

TEST(ExitWhileRunning, byReturnFromMain) {
  for (int round = 0; round < 10; ++round) {
    const Ending ending = endingOf("return");
    EXPECT_EQ(ending.status, 6);
    EXPECT_LT(ending.took, 5s);
  }
}

TEST(ExitWhileRunning, byExit) {
  for (int round = 0; round < 10; ++round) {
    const Ending ending = endingOf("exit");
    EXPECT_EQ(ending.status, 5);
    EXPECT_LT(ending.took, 5s);
  }
}

TEST(ExitWhileRunning, byExitInTheCallback) {
  const Ending ending = endingOf("callback");
  EXPECT_EQ(ending.status, 7);
  EXPECT_LT(ending.took, 5s);
}

TEST(ExitWhileRunning, withADeviceThatHangs) {
  const Ending ending = endingOf("hang");
  EXPECT_EQ(ending.status, 6);
  EXPECT_LT(ending.took, 5s);
}

}  // namespace

}  // namespace tolvane::test
