// The system has no thread left: the call that needs one fails, and nothing hangs.
#include <array>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "hal/core_audio.h"

namespace tolvane::test {

namespace {

struct Ending {
  int status = -1;  // of the process; -1 when it had to be killed
  std::string out;
};

/// Runs the program with this limit of threads at first.
Ending endingWith(int threads) {
  const std::string command =
      std::string("timeout -s KILL 60 ") + TOLVANE_WITHOUT_THREADS + " " + std::to_string(threads);
  FILE* const pipe = popen(command.c_str(), "r");
  Ending ending;
  std::array<char, 256> line{};
  while (std::fgets(line.data(), line.size(), pipe) != nullptr) ending.out += line.data();
  const int status = pclose(pipe);
  if (WIFEXITED(status) && WEXITSTATUS(status) < 124) ending.status = WEXITSTATUS(status);
  return ending;
}

TEST(WithoutThreads, EveryCallThatNeedsOneFailsAndTheNextOneWithThemSucceeds) {
  const Ending ending = endingWith(1);
  EXPECT_EQ(ending.status, 0);
  const std::string none = std::to_string(kTolvaneExhaustedError);
  EXPECT_EQ(ending.out, "list " + none + "\nlisten " + none + "\nlist 0\nstart " + none + "\nset " + none +
                            "\nstart 0\nstop 0\nlist 0\nend\n");
}

TEST(WithoutThreads, AnyNumberOfThemIsEnoughToEnd) {
  for (int threads = 2; threads <= 12; ++threads) {
    const Ending ending = endingWith(threads);
    EXPECT_EQ(ending.status, 0) << threads;
    EXPECT_NE(ending.out.find("end\n"), std::string::npos) << threads << "\n" << ending.out;
  }
}

}  // namespace

}  // namespace tolvane::test
