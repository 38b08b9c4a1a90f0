// The early end of the process: by signals and by uncaught exceptions.
#include "ctl/process/early_end.h"

#include <cstdlib>
#include <new>
#include <stdexcept>
#include <system_error>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "ctl/support/files.h"

namespace tolvane::ctl {
namespace {

using testing::ExitedWithCode;
using testing::KilledBySignal;

class EarlyEndDeathTest : public testing::TestWithParam<int> {
 protected:
  template <class Exception>
  static void throwInAThread(const Exception& exception) {
    prepareForEarlyEnds();
    std::thread([exception] { throw exception; }).join();
  }
};

TEST_P(EarlyEndDeathTest, ByASignalRemovesTheFile) {
  const test::TemporaryFolder folder;
  test::writeText(folder / "half", "text");
  EXPECT_EXIT(
      {
        prepareForEarlyEnds();
        removeAtEarlyEnd((folder / "half").c_str());
        std::raise(GetParam());
      },
      KilledBySignal(GetParam()), "");
  EXPECT_THAT(folder.names(), testing::IsEmpty());
}

TEST_P(EarlyEndDeathTest, ByASignalLeavesAFileThatIsWhole) {
  const test::TemporaryFolder folder;
  test::writeText(folder / "whole", "text");
  EXPECT_EXIT(
      {
        prepareForEarlyEnds();
        removeAtEarlyEnd((folder / "whole").c_str());
        removeAtEarlyEnd(nullptr);
        std::raise(GetParam());
      },
      KilledBySignal(GetParam()), "");
  EXPECT_THAT(folder.names(), testing::ElementsAre("whole"));
}

TEST_P(EarlyEndDeathTest, ByASignalThatTheParentHadBlocked) {
  EXPECT_EXIT(
      {
        const SignalsHeld held;
        prepareForEarlyEnds();
        std::raise(GetParam());
        std::_Exit(0);
      },
      KilledBySignal(GetParam()), "");
}

TEST_P(EarlyEndDeathTest, IsNotBroughtByASignalThatTheParentIgnores) {
  EXPECT_EXIT(
      {
        std::signal(GetParam(), SIG_IGN);
        prepareForEarlyEnds();
        std::raise(GetParam());
        std::_Exit(7);
      },
      ExitedWithCode(7), "");
}

INSTANTIATE_TEST_SUITE_P(Signals, EarlyEndDeathTest, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT));

TEST_F(EarlyEndDeathTest, ForWantOfMemoryInAnyThreadIsAFailure) {
  EXPECT_EXIT(throwInAThread(std::bad_alloc()), ExitedWithCode(1), "^tolvanectl: out of memory\n$");
}

TEST_F(EarlyEndDeathTest, ForWantOfAThreadInAnyThreadIsAFailure) {
  const std::system_error error(EAGAIN, std::generic_category());
  EXPECT_EXIT(throwInAThread(error), ExitedWithCode(1), "^tolvanectl: Resource temporarily unavailable\n$");
}

TEST_F(EarlyEndDeathTest, ByAMistakeOfOursIsACrash) {
  EXPECT_EXIT(throwInAThread(std::logic_error("")), KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace tolvane::ctl
