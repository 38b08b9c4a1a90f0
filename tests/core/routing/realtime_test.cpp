// On the device's thread the callback allocates two tables, frees them, and allocates nothing else. The other
// tests show that the watch would see more.
#include <atomic>
#include <cstdlib>
#include <thread>

#include "realtime_fixture.h"

namespace tolvane::test {
namespace {

// Volatile, so that the compiler cannot leave out an allocation.
void* volatile escaped = nullptr;

TEST_F(RealtimeTest, AllocatesExactlyTwiceAndFreesExactlyTwice) {
  for (const std::int64_t routes : {64, 1, 0}) {
    publishRoutes(routes);
    for (int cycle = 0; cycle < 100; ++cycle) {
      const RealtimeReport report = watch(&halIOProc);
      EXPECT_EQ(report.allocations, 2);
      EXPECT_EQ(report.frees, 2);
    }
  }
}

TEST_F(RealtimeTest, AllocatesNothingWhenThereIsNothingToRoute) {
  context_.inputChannelCount = 0;
  const RealtimeReport report = watch(&halIOProc);
  EXPECT_EQ(report.allocations, 0);
  EXPECT_EQ(report.frees, 0);
}

TEST_F(RealtimeTest, FreesBothTablesOnEveryEarlyReturn) {
  for (const UInt32 bytes : {0U, 3U}) {
    output_.buffer(0).mDataByteSize = bytes;
    const RealtimeReport report = watch(&halIOProc);
    EXPECT_EQ(report.allocations, 2);
    EXPECT_EQ(report.frees, 2);
  }
}

TEST_F(RealtimeTest, WatchSeesAThirdAllocation) {
  const RealtimeReport report = watch(&routeAnd<[] {
    escaped = std::malloc(1);  // NOLINT(cppcoreguidelines-no-malloc)
    std::free(escaped);        // NOLINT(cppcoreguidelines-no-malloc)
  }>);
  EXPECT_EQ(report.allocations, 3);
  EXPECT_EQ(report.frees, 3);
}

TEST_F(RealtimeTest, WatchSeesAllocationByTheLanguage) {
  const RealtimeReport report = watch(&routeAnd<[] {
    escaped = new int(1);
    delete static_cast<int*>(escaped);
  }>);
  EXPECT_EQ(report.allocations, 3);
  EXPECT_EQ(report.frees, 3);
}

TEST_F(RealtimeTest, WatchIsOfItsOwnThread) {
  RealtimeWatch watch;
  std::atomic<int> step = 0;
  std::thread other([&step] {
    while (step.load() == 0) std::this_thread::yield();
    escaped = new int(1);
    delete static_cast<int*>(escaped);
  });
  const RealtimeReport before = watch.report();
  step = 1;
  other.join();
  RealtimeWatch again;
  call(&halIOProc);
  EXPECT_EQ(again.report().allocations, 2);
  EXPECT_GE(before.allocations, 1) << "starting a thread allocates, on this one";
}

}  // namespace
}  // namespace tolvane::test
