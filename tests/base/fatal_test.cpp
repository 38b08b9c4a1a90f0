// The line that a fatal error leaves.
#include "base/fatal.h"

#include <csignal>
#include <string>

#include <gtest/gtest.h>

namespace tolvane::test {
namespace {

TEST(FatalDeathTest, WritesOneLineAndAborts) {
  EXPECT_EXIT(fatal("the message"), testing::KilledBySignal(SIGABRT), "^tolvane: fatal: the message\n$");
}

TEST(FatalDeathTest, CutsALongMessageButKeepsTheLine) {
  EXPECT_DEATH(fatal(std::string(238, 'x').c_str()), "^tolvane: fatal: x{238}\n$");
  EXPECT_DEATH(fatal(std::string(239, 'x').c_str()), "^tolvane: fatal: x{238}\n$");
  EXPECT_DEATH(fatal(std::string(1000, 'x').c_str()), "^tolvane: fatal: x{238}\n$");
}

}  // namespace
}  // namespace tolvane::test
