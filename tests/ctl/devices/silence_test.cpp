// How long a wait for sound servers lasts when some of them answer.
#include "ctl/devices/silence.h"

#include <gtest/gtest.h>

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;
using ctl::Silence;

class SilenceOfServers : public testing::Test {
 protected:
  void list(const std::string& silentServers, std::chrono::milliseconds at) {
    silence_.note(silentServers, begin_ + at);
  }

  const Silence::Clock::time_point begin_{1h};
  Silence silence_{begin_};
};

TEST_F(SilenceOfServers, NoneIsSilentInAFullList) {
  list("", 0ms);
  EXPECT_TRUE(silence_.hasLasted(2s));
}

TEST_F(SilenceOfServers, CountsFromTheBeginningForAServerThatNeverAnswers) {
  list("pipewire", 1s);
  EXPECT_FALSE(silence_.hasLasted(2s));
  list("pipewire", 1999ms);
  EXPECT_FALSE(silence_.hasLasted(2s));
  list("pipewire", 2s);
  EXPECT_TRUE(silence_.hasLasted(2s));
}

TEST_F(SilenceOfServers, WithoutAWaitTheFirstListIsEnough) {
  list("jack, pipewire", 0ms);
  EXPECT_TRUE(silence_.hasLasted(0s));
}

TEST_F(SilenceOfServers, AServerThatIsLateOnceIsWaitedForFromItsLastAnswerOn) {
  list("pipewire", 1900ms);
  list("pipewire, alsa", 2050ms);
  EXPECT_FALSE(silence_.hasLasted(2s));
  list("pipewire", 2100ms);
  EXPECT_TRUE(silence_.hasLasted(2s));
}

TEST_F(SilenceOfServers, AServerThatStaysSilentAfterAnAnswerIsWaitedForNoLonger) {
  list("pipewire", 1900ms);
  list("pipewire, alsa", 2050ms);
  list("pipewire, alsa", 3899ms);
  EXPECT_FALSE(silence_.hasLasted(2s));
  list("pipewire, alsa", 3900ms);
  EXPECT_TRUE(silence_.hasLasted(2s));
}

}  // namespace
}  // namespace tolvane::test
