// The callback calls nothing that blocks, and makes no system call. The other tests show that the watch sees
// calls that do.
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include <sys/syscall.h>
#include <unistd.h>

#include "realtime_fixture.h"

namespace tolvane::test {
namespace {

using BlockingCallTest = RealtimeTest;

TEST_F(BlockingCallTest, CallsNothingThatBlocks) {
  for (int cycle = 0; cycle < 100; ++cycle) {
    const RealtimeReport report = watch(&halIOProc);
    EXPECT_EQ(report.blockingCalls, 0) << report.firstBlockingCall;
  }
}

TEST_F(BlockingCallTest, WatchSeesALock) {
  static std::mutex mutex;
  const RealtimeReport report = watch(&routeAnd<[] { const std::lock_guard lock(mutex); }>);
  EXPECT_EQ(report.blockingCalls, 1);
  EXPECT_STREQ(report.firstBlockingCall, "pthread_mutex_lock");
}

TEST_F(BlockingCallTest, WatchSeesASleep) {
  const RealtimeReport report =
      watch(&routeAnd<[] { std::this_thread::sleep_for(std::chrono::nanoseconds(1)); }>);
  EXPECT_EQ(report.blockingCalls, 1);
  EXPECT_NE(report.firstBlockingCall, nullptr);
}

TEST_F(BlockingCallTest, WatchSeesAFutex) {
  static std::atomic<int> word = 1;
  const RealtimeReport report = watch(&routeAnd<[] {
    word.wait(0);
    word.notify_one();
  }>);
  EXPECT_EQ(report.blockingCalls, 0) << "an atomic that is not waited on makes no call";
  const RealtimeReport direct =
      watch(&routeAnd<[] { ::syscall(SYS_futex, &word, 129, 1, nullptr, nullptr, 0); }>);
  EXPECT_EQ(direct.blockingCalls, 1);
  EXPECT_STREQ(direct.firstBlockingCall, "syscall");
}

TEST_F(BlockingCallTest, WatchSeesAWrite) {
  const RealtimeReport report =
      watch(&routeAnd<[] { [[maybe_unused]] const auto written = ::write(STDERR_FILENO, "", 0); }>);
  EXPECT_EQ(report.blockingCalls, 1);
  EXPECT_STREQ(report.firstBlockingCall, "write");
}

#if defined(__x86_64__)  // elsewhere the kernel does not report them
TEST_F(BlockingCallTest, MakesNoSystemCall) {
  ASSERT_TRUE(RealtimeWatch::seesSystemCalls());
  for (int cycle = 0; cycle < 100; ++cycle) EXPECT_EQ(watch(&halIOProc).systemCalls, 0);
}

TEST_F(BlockingCallTest, WatchSeesASystemCallThatNoFunctionMakes) {
  const RealtimeReport report = watch(&routeAnd<[] {
    for (int i = 0; i < 3; ++i) {
      long result = SYS_getppid;
      asm volatile("syscall" : "+a"(result) : : "rcx", "r11", "memory");
      EXPECT_EQ(result, ::getppid());
    }
  }>);
  EXPECT_EQ(report.blockingCalls, 0);
  EXPECT_EQ(report.systemCalls, 6) << "each is made, too";
  EXPECT_EQ(report.firstSystemCall, SYS_getppid);
}

#endif

TEST_F(BlockingCallTest, WatchLeavesOutWhatIsAllowed) {
  const AllowedCall allowed[] = {{"nanosleep", SYS_nanosleep}, {nullptr, -1}};
  RealtimeWatch watch(allowed);
  const timespec moment{0, 1};
  ::nanosleep(&moment, nullptr);
  ::usleep(1);
  const RealtimeReport& report = watch.report();
  EXPECT_STREQ(report.firstBlockingCall, "usleep");
  EXPECT_EQ(report.blockingCalls, 1);
}

}  // namespace
}  // namespace tolvane::test
