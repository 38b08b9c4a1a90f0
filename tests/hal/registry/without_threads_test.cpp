// The system has no thread left: the call that needs one fails, and nothing hangs.
#include <array>
#include <cstdio>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include "hal/core_audio.h"

namespace tolvane::test {

namespace {

struct Outcome {
  int status = -1;  // of the process; -1 when it had to be killed
  std::string out;
};

/// Runs the program with this limit of threads at first.
Outcome outcomeWith(int threads) {
  const std::string command =
      std::string("timeout -s KILL 60 ") + TOLVANE_WITHOUT_THREADS + " " + std::to_string(threads);
  FILE* const pipe = popen(command.c_str(), "r");
  Outcome outcome;
  std::array<char, 256> line{};
  while (std::fgets(line.data(), line.size(), pipe) != nullptr) outcome.out += line.data();
  const int status = pclose(pipe);
  if (WIFEXITED(status) && WEXITSTATUS(status) < 124) outcome.status = WEXITSTATUS(status);
  return outcome;
}

TEST(WithoutThreads, EveryCallThatNeedsOneFailsAndTheNextOneWithThemSucceeds) {
  const Outcome outcome = outcomeWith(1);
  EXPECT_EQ(outcome.status, 0);
  const std::string none = std::to_string(kTolvaneExhaustedError);
  const std::string before = "prefetch " + none + "\nlist " + none + "\nlisten " + none + "\nlist 0\nstart " +
                             none + "\nset " + none + "\nstart 0\nstop 0\n";
  // JACK's last answer is valid for 100 ms. The last list needs a thread only after that.
  EXPECT_THAT(outcome.out, testing::AnyOf(before + "list 0\nend\n", before + "list " + none + "\nend\n"));
}

TEST(WithoutThreads, AnyNumberOfThemIsEnoughToEnd) {
  for (int threads = 2; threads <= 12; ++threads) {
    const Outcome outcome = outcomeWith(threads);
    EXPECT_EQ(outcome.status, 0) << threads;
    EXPECT_NE(outcome.out.find("end\n"), std::string::npos) << threads << "\n" << outcome.out;
  }
}

}  // namespace

}  // namespace tolvane::test
