// Real-time priority within the user's limit. Few environments let a test raise that limit, so this program
// replaces the system's two functions with its own, which follow the system's rule.
#include "hal/support/realtime.h"

#include <cerrno>
#include <optional>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

int priorityLimit = 0;
std::optional<int> grantedPolicy;
int grantedPriority = 0;

}  // namespace

extern "C" int getrlimit(__rlimit_resource_t resource, rlimit* limit) noexcept {
  if (resource != RLIMIT_RTPRIO) {
    return prlimit(0, static_cast<__rlimit_resource>(resource), nullptr, limit);
  }
  *limit = {static_cast<rlim_t>(priorityLimit), static_cast<rlim_t>(priorityLimit)};
  return 0;
}

extern "C" int pthread_setschedparam(pthread_t /*thread*/, int policy, const sched_param* param) noexcept {
  if (param->sched_priority > priorityLimit) return EPERM;
  grantedPolicy = policy;
  grantedPriority = param->sched_priority;
  return 0;
}

namespace tolvane::test {
namespace {

class RealtimePriority : public testing::TestWithParam<int> {
 protected:
  RealtimePriority() {
    priorityLimit = GetParam();
    grantedPolicy.reset();
  }
};

TEST_P(RealtimePriority, IsTheHighestThatTheLimitAllows) {
  EXPECT_TRUE(hal::becomeRealtime());
  EXPECT_EQ(grantedPolicy, SCHED_FIFO | SCHED_RESET_ON_FORK);
  EXPECT_EQ(grantedPriority, std::min(GetParam(), 60));
}

INSTANTIATE_TEST_SUITE_P(Limits, RealtimePriority, testing::Values(1, 20, 59, 60, 99));

TEST(NoRealtimePriority, IsSaidWhereTheLimitAllowsNone) {
  priorityLimit = 0;
  grantedPolicy.reset();
  EXPECT_FALSE(hal::becomeRealtime());
  EXPECT_FALSE(grantedPolicy);
}

TEST(SchedulingOf, AThreadIsAsTheSystemHasItNow) {
  EXPECT_EQ(hal::schedulingOf(gettid())->policy, SCHED_OTHER);
  EXPECT_EQ(hal::schedulingOf(gettid())->priority, 0);
  const sched_param none{};
  ASSERT_EQ(sched_setscheduler(0, SCHED_BATCH | SCHED_RESET_ON_FORK, &none), 0);
  EXPECT_EQ(hal::schedulingOf(gettid())->policy, SCHED_BATCH);
}

TEST(SchedulingOf, AThreadThatIsNotThereIsNone) {
  EXPECT_FALSE(hal::schedulingOf(0x3FFFFFFF));  // above every id
}

}  // namespace
}  // namespace tolvane::test
