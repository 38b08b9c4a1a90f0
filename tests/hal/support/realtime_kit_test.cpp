// Asks for real-time priority on the test's own bus with the test's own service.
#include "hal/support/realtime_kit.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "hal/support/realtime_kit_service.h"

namespace tolvane::hal {
namespace {

using test::PrivateBus;
using test::RealtimeKitService;

TEST(RealtimeKit, MakesTheThreadRealtimeWithinWhatTheServiceAllows) {
  const PrivateBus& bus = PrivateBus::shared();
  RealtimeKitService service(bus, {.maxPriority = 15, .maxCpuUs = 150'000, .grants = true});
  EXPECT_TRUE(askRealtimeKit(gettid(), 60));
  const auto requests = service.requests();
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0].process, static_cast<std::uint64_t>(getpid()));
  EXPECT_EQ(requests[0].thread, static_cast<std::uint64_t>(gettid()));
  EXPECT_EQ(requests[0].priority, 15U);
  // The limit was lowered before the service was asked.
  EXPECT_EQ(requests[0].cpuLimitUs, 150'000U);
}

TEST(RealtimeKit, AsksForNoMoreThanIsWanted) {
  const PrivateBus& bus = PrivateBus::shared();
  RealtimeKitService service(bus, {.maxPriority = 99, .maxCpuUs = 100'000, .grants = true});
  EXPECT_TRUE(askRealtimeKit(gettid(), 7));
  ASSERT_EQ(service.requests().size(), 1U);
  EXPECT_EQ(service.requests()[0].priority, 7U);
}

TEST(RealtimeKit, ARefusalIsFalse) {
  const PrivateBus& bus = PrivateBus::shared();
  RealtimeKitService service(bus, {.maxPriority = 20, .maxCpuUs = 100'000, .grants = false});
  EXPECT_FALSE(askRealtimeKit(gettid(), 20));
  EXPECT_EQ(service.requests().size(), 1U);
}

TEST(RealtimeKit, WithoutTheServiceItIsFalse) {
  PrivateBus::shared();
  EXPECT_FALSE(askRealtimeKit(gettid(), 20));
}

}  // namespace
}  // namespace tolvane::hal
