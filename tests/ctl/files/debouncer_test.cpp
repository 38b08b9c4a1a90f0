#include "ctl/files/debouncer.h"

#include <gtest/gtest.h>

namespace tolvane::ctl {
namespace {

using std::chrono::milliseconds;

TEST(Debouncer, IsNotDueUntouched) {
  Debouncer debouncer;
  EXPECT_FALSE(debouncer.due());
  EXPECT_FALSE(debouncer.settled(Debouncer::Time{}));
}

TEST(Debouncer, SettlesOnceAfterAQuietMoment) {
  const Debouncer::Time start{};
  Debouncer debouncer;
  debouncer.touch(start);
  debouncer.touch(start + milliseconds(80));
  EXPECT_FALSE(debouncer.settled(start + milliseconds(179)));
  EXPECT_TRUE(debouncer.settled(start + milliseconds(180)));
  EXPECT_FALSE(debouncer.settled(start + milliseconds(500)));
}

TEST(Debouncer, DoesNotWaitForEver) {
  const Debouncer::Time start{};
  Debouncer debouncer;
  milliseconds at{0};
  for (; at < milliseconds(1000); at += milliseconds(50)) {
    debouncer.touch(start + at);
    EXPECT_FALSE(debouncer.settled(start + at)) << at.count();
  }
  debouncer.touch(start + at);
  EXPECT_TRUE(debouncer.settled(start + at));
}

}  // namespace
}  // namespace tolvane::ctl
