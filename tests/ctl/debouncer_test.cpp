#include "ctl/settling.h"

#include <gtest/gtest.h>

namespace tolvane::ctl {
namespace {

using std::chrono::milliseconds;

TEST(Settling, IsNotDueUntouched) {
  Settling settling;
  EXPECT_FALSE(settling.due());
  EXPECT_FALSE(settling.settled(Settling::Time{}));
}

TEST(Settling, SettlesOnceAfterAQuietMoment) {
  const Settling::Time start{};
  Settling settling;
  settling.touch(start);
  settling.touch(start + milliseconds(80));
  EXPECT_FALSE(settling.settled(start + milliseconds(179)));
  EXPECT_TRUE(settling.settled(start + milliseconds(180)));
  EXPECT_FALSE(settling.settled(start + milliseconds(500)));
}

TEST(Settling, DoesNotWaitForEver) {
  const Settling::Time start{};
  Settling settling;
  milliseconds at{0};
  for (; at < milliseconds(1000); at += milliseconds(50)) {
    settling.touch(start + at);
    EXPECT_FALSE(settling.settled(start + at)) << at.count();
  }
  settling.touch(start + at);
  EXPECT_TRUE(settling.settled(start + at));
}

}  // namespace
}  // namespace tolvane::ctl
